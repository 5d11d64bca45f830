// Captures every line the process writes to the platform log, so that tests and the console can
// show and check what the native library logged.
#ifndef SIMDEVICE_LOG_CAPTURE_H
#define SIMDEVICE_LOG_CAPTURE_H

#include <string>
#include <vector>

namespace simdevice {

// Installs the capturing logger and lowers the minimum priority to verbose. Lines logged before
// are not captured; installing again only keeps capturing.
void CaptureLogs();
// Captured lines since the last take, oldest first, as "P TEXT" with P one of V D I W E F. The
// text is the message as formatted, unchanged, after "TAG: " for a line with a tag. At most the
// newest 65536 lines are kept.
std::vector<std::string> TakeLogs();

}  // namespace simdevice

#endif
