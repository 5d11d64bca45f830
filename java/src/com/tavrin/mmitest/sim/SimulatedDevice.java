package com.tavrin.mmitest.sim;

import java.util.List;

/**
 * The simulated device: the seven vendor services running inside this process, as the native
 * library finds them through the host transport. Services are named as
 * catalogue().serviceNames() lists them; an unknown name throws
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
     * become 0, false, "" or []), or one of catalogue().keywords() as the whole answer: the
     * service returns without calling back (callback operations only), the call fails while the
     * service lives on, or the service dies in the middle of the call (the caller sees a dead
     * transport, death recipients are told, and the service registers again after the restart
     * delay). A text is a JSON string, bytes:HEX, or any other word up to the
     * next comma ("0,on battery"), as a shell leaves a quoted value. catalogue() lists the
     * keywords and forms. Returns null when accepted, else why not, naming the keyword meant
     * when one is misspelt.
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

    /** Every operation back to the healthy device's answer, without delay. */
    public static native void resetAnswers();

    /**
     * Back to a started healthy device: default answers without delay, no absent or 1.0-only
     * service, the default restart delay, no registration still to come, no recorded calls, every
     * service registered with its full version.
     */
    public static native void reset();

    /** Takes the service off a started device: killed, and not there to reconnect until reset(). */
    public static native void withdraw(String service);

    /** How long the waits without a timeout of their own wait: 30 s. */
    public static final long DEFAULT_WAIT_MS = 30_000;

    /**
     * Returns true once every death and registration report posted so far has been delivered
     * (the library has handled it), false when timeoutMs ran out first: a report's handler, such
     * as the library's reconnect, is still running, typically waiting for a service that is
     * declared but not registered (waitingFor() names them).
     */
    public static native boolean waitIdle(long timeoutMs);

    /** waitIdle(DEFAULT_WAIT_MS), throwing IllegalStateException naming what it waited for. */
    public static void waitIdle() {
        if (!waitIdle(DEFAULT_WAIT_MS)) {
            throw new IllegalStateException("the transport's reports were not delivered within "
                    + DEFAULT_WAIT_MS / 1000 + " s; waiting for " + waitingFor());
        }
    }

    /**
     * Returns true once every registration still to come (a start delay, a crashed service's
     * restart, a reviveAfter()) has been made and its reports delivered, as waitIdle() then does;
     * false when timeoutMs ran out first (waitingFor() says what was still to come). A service
     * that stays down (restart delay negative) is not waited for; with nothing to come it returns
     * as soon as the reports so far are delivered (pendingRegistrations() is then empty).
     */
    public static native boolean waitRestarts(long timeoutMs);

    /** waitRestarts(DEFAULT_WAIT_MS), throwing IllegalStateException naming what it waited for. */
    public static void waitRestarts() {
        if (!waitRestarts(DEFAULT_WAIT_MS)) {
            throw new IllegalStateException("restarts not done within " + DEFAULT_WAIT_MS / 1000
                    + " s; waiting for " + waitingFor());
        }
    }

    /**
     * What a wait that ran out was waiting for, in words: "power to register in 250 ms; declared
     * but not registered, so lookups of them wait: light".
     */
    public static native String waitingFor();

    /** The services whose registration is still to come, soonest first. */
    public static List<String> pendingRegistrations() {
        return List.of(pendingRegistrationArray());
    }

    private static native String[] pendingRegistrationArray();

    /** kill(service), then waitIdle(timeoutMs): true once the library has handled the death. */
    public static boolean kill(String service, long timeoutMs) {
        kill(service);
        return waitIdle(timeoutMs);
    }

    /** revive(service), then waitIdle(timeoutMs): true once the library has handled the registration. */
    public static boolean revive(String service, long timeoutMs) {
        revive(service);
        return waitIdle(timeoutMs);
    }

    /**
     * Registers the service ms milliseconds from now and returns at once, so that the library's
     * reconnect waits for it as on a device; waitRestarts() waits for it too. False (and nothing
     * done) when the service is registered. IllegalArgumentException for a negative ms.
     */
    public static native boolean reviveAfter(String service, long ms);

    /**
     * Programs a sequence of answers, each as program() takes it: successive calls of the
     * operation take successive answers and the last one holds ("crash", "0": the first call
     * crashes the service, every later one answers 0). All or nothing. Returns null when
     * accepted, else why not, naming the refused answer's place.
     */
    public static native String programSequence(String service, String operation, String... answers);

    /**
     * Makes every later call of the operation take ms milliseconds before the service answers,
     * as a slow service does; 0 answers at once. resetAnswers() and reset() end it. Returns null
     * when accepted, else why not.
     */
    public static native String setDelay(String service, String operation, long ms);

    /**
     * Every call received since the last take, oldest first. Takes from the same record as
     * takeCalls().
     */
    public static List<Call> takeCallRecords() {
        return List.of(takeCallArray());
    }

    private static native Call[] takeCallArray();

    /**
     * Old form, kept for the console until it moves to records (use takeCallRecords()):
     * "service.operation(args)" for each call received since the last take, oldest first.
     */
    public static native String[] takeCalls();

    /** Old form, unused: positions of the calls the last takeCalls() returned, in the same order. */
    public static native int[] takeCallPositions();

    /** Captures every platform log line from now on, verbose included. */
    public static native void captureLogs();

    /**
     * Captured lines since the last take, oldest first, each without the library's trailing
     * newline. Takes from the same record as takeLogs().
     */
    public static List<LogLine> takeLogLines() {
        return List.of(takeLogArray());
    }

    private static native LogLine[] takeLogArray();

    /**
     * Old form, kept for the console until it moves to records (use takeLogLines()): captured
     * lines since the last take as "P TEXT", P one of V D I W E F; oldest first. TEXT is the
     * message as written, trailing newline included, after "TAG: " when the line has a tag (the
     * platform's own lines do; the library's have none).
     */
    public static native String[] takeLogs();

    /**
     * Old form, kept for the console until it moves to the catalogue (use
     * catalogue().service(name)): names of the service's operations that the native library
     * calls, in position order.
     */
    public static native String[] operations(String service);

    /**
     * Old form, kept for the console until it moves to the catalogue (use Catalogue.Operation's
     * shape()): what each operation of operations(service) answers, in the same order.
     */
    public static native String[] shapes(String service);

    /** The device's own description of itself: services, operations, answers, answer grammar. */
    public static Catalogue catalogue() {
        return CatalogueHolder.CATALOGUE;
    }

    private static final class CatalogueHolder {
        static final Catalogue CATALOGUE = readCatalogue();
    }

    private static native Catalogue readCatalogue();

    /**
     * Whether the native library (or any client) holds a death link to the service's current
     * registration: whether its handle of the service is connected. False while the service is
     * not registered.
     */
    public static native boolean linked(String service);

    /** The services linked() holds for, in the catalogue's order. */
    public static List<String> linkedServices() {
        return catalogue().serviceNames().stream().filter(SimulatedDevice::linked).toList();
    }
}
