// Nothing of its own: the unit that compiles the header the stand-ins share.
