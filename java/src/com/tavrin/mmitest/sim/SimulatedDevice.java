package com.tavrin.mmitest.sim;

/**
 * The simulated device: the seven vendor services running inside this process, as the native
 * library finds them through the host transport. Services are named factory, display,
 * touchscreen, sensors, power, light and otherdevices; an unknown name throws
 * IllegalArgumentException. Every method is safe to call from any thread.
 */
public final class SimulatedDevice {
    static { System.loadLibrary("simdevice_jni"); }

    /** Leaves the service unregistered at start(). IllegalStateException after start(). */
    public static native void setAbsent(String service, boolean absent);

    /**
     * Offers only version 1.0 of factory, display or sensors (IllegalArgumentException for the
     * others): casts to 1.1 then answer empty. Takes effect at the service's next registration,
     * start() or a revive() after kill().
     */
    public static native void setOnlyV10(String service, boolean only);

    /**
     * Programs the answer of every later call of the operation: a value ("7", "true", "-3"), the
     * callback's values separated by commas ("5,\"info\"", "0,[1,2,3]"; missing trailing values
     * become 0, false, "" or []), "nocallback" (callback operations only) or "transport-error".
     * Strings are JSON strings. Returns null when accepted, else why not.
     */
    public static native String program(String service, String operation, String answer);

    /** Registers every service not set absent. Later calls do nothing. */
    public static native void start();

    /** Kills the service: calls fail with a transport error, death recipients are told. */
    public static native void kill(String service);

    /** Registers the service again, with a new registration report; nothing if it runs. */
    public static native void revive(String service);

    /** Every operation back to the healthy device's answer. */
    public static native void resetAnswers();

    /** Returns once every death and registration report so far has been delivered. */
    public static native void waitIdle();

    /** "service.operation(args)" for each call received since the last take, oldest first. */
    public static native String[] takeCalls();

    /** Positions of the calls the last takeCalls() returned, in the same order. */
    public static native int[] takeCallPositions();

    /** Captures every platform log line from now on, verbose included. */
    public static native void captureLogs();

    /** Captured lines since the last take as "P TEXT", P one of V D I W E F; oldest first. */
    public static native String[] takeLogs();

    /** Names of the service's operations that the native library calls, in position order. */
    public static native String[] operations(String service);

    /**
     * What each operation of operations(service) answers, in the same order: "value: int64" or
     * "callback: int32 resultCode, int32[] samples".
     */
    public static native String[] shapes(String service);
}
