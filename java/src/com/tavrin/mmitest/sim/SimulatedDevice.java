package com.tavrin.mmitest.sim;

/**
 * The simulated device: the seven vendor services running inside this process, as the native
 * library finds them through the host transport. Services are named factory, display,
 * touchscreen, sensors, power, light and otherdevices; an unknown name throws
 * IllegalArgumentException. Every method is safe to call from any thread.
 */
public final class SimulatedDevice {
    static { System.loadLibrary("simdevice_jni"); }

    /**
     * Leaves the service undeclared and unregistered at start(): a lookup of it answers empty at
     * once. Every other service is declared, as a device's manifest declares it, so a lookup of it
     * waits (logging "W HidlServiceManagement: Waited one second for INTERFACE/INSTANCE" each second)
     * for as long as it is not registered: late, killed or crashed. IllegalStateException after
     * start().
     */
    public static native void setAbsent(String service, boolean absent);

    /**
     * Registers the service ms milliseconds after start() rather than at start(), so that the
     * library's load waits for it. IllegalArgumentException for a negative ms,
     * IllegalStateException after start().
     */
    public static native void setStartDelay(String service, long ms);

    /**
     * How long a service that crashed in the middle of a call stays down before it registers again,
     * as the platform restarts a crashed service: ms milliseconds, 300 at first; a negative ms
     * (-1): it stays down until revive().
     */
    public static native void setRestartDelay(long ms);

    /**
     * Offers only version 1.0 of factory, display or sensors (IllegalArgumentException for the
     * others): casts to 1.1 then answer empty. Takes effect at the service's next registration,
     * start() or a revive() after kill().
     */
    public static native void setOnlyV10(String service, boolean only);

    /**
     * Programs the answer of every later call of the operation: a value ("7", "true", "-3"), the
     * callback's values separated by commas ("5,\"info\"", "0,[1,2,3]"; missing trailing values
     * become 0, false, "" or []), "nocallback" (callback operations only), "transport-error" (the
     * call fails, the service lives on) or "crash" (the service dies in the middle of the call:
     * the caller sees a dead transport, death recipients are told, and the service registers again
     * after the restart delay). Strings are JSON strings. Returns null when accepted, else why not.
     */
    public static native String program(String service, String operation, String answer);

    /** Registers every service not set absent (late ones after their delay). Later calls do nothing. */
    public static native void start();

    /**
     * Kills the service: calls fail with a transport error, death recipients are told. It stays
     * declared, so lookups of it wait until revive().
     */
    public static native void kill(String service);

    /** Registers the service again, with a new registration report; nothing if it runs. */
    public static native void revive(String service);

    /** Every operation back to the healthy device's answer. */
    public static native void resetAnswers();

    /**
     * Back to a started healthy device: default answers, no absent or 1.0-only service, no
     * recorded calls, every service registered with its full version.
     */
    public static native void reset();

    /** Takes the service off a started device: killed, and not there to reconnect until reset(). */
    public static native void withdraw(String service);

    /** Returns once every death and registration report so far has been delivered. */
    public static native void waitIdle();

    /**
     * Returns once every registration still to come (a start delay, a crashed service's restart)
     * has been made and its reports delivered, as waitIdle() then does. A service that stays down
     * (restart delay negative) is not waited for.
     */
    public static native void waitRestarts();

    /** "service.operation(args)" for each call received since the last take, oldest first. */
    public static native String[] takeCalls();

    /** Positions of the calls the last takeCalls() returned, in the same order. */
    public static native int[] takeCallPositions();

    /** Captures every platform log line from now on, verbose included. */
    public static native void captureLogs();

    /**
     * Captured lines since the last take as "P TEXT", P one of V D I W E F; oldest first. TEXT is
     * the message as written, after "TAG: " when the line has a tag (the platform's own lines do;
     * the library's have none).
     */
    public static native String[] takeLogs();

    /** Names of the service's operations that the native library calls, in position order. */
    public static native String[] operations(String service);

    /**
     * What each operation of operations(service) answers, in the same order: "value: int64" or
     * "callback: int32 resultCode, int32[] samples".
     */
    public static native String[] shapes(String service);
}
