package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.time.Duration;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Objects;
import java.util.Set;
import java.util.function.Predicate;
import java.util.stream.Collectors;

/**
 * The simulated device as one running test sees it. {@link SimulatedDeviceExtension} hands it to a
 * test method (or a {@code @BeforeEach}/{@code @AfterEach} method) as a parameter, after putting
 * the device back to healthy: every service registered with its newest version, every operation
 * answering as a healthy device does, at once, the library's handles connected, nothing recorded.
 *
 * <p>Everything a test changes here lasts until the test ends. A {@code Device} used outside its
 * test (in {@code @BeforeAll}, or kept after the test) throws {@link IllegalStateException}.
 * Services and operations are named as the tables of the overview page name them; an operation is
 * written {@code "SERVICE.OPERATION"}, such as {@code "sensors.startSensorSelfTest"}.
 *
 * <p>Every wait ends: {@link #kill}, {@link #revive}, {@link #waitForRestarts()} and the reset
 * before a test give up after the wait limit (10 seconds unless {@link #waitLimit} or the system
 * property {@value #WAIT_LIMIT_PROPERTY} says otherwise) with an {@link IllegalStateException}
 * naming what they waited for. A wait also ends when the test's thread is interrupted, as JUnit's
 * {@code @Timeout} does, and the next test finds the device reset as always.
 */
public final class Device {
    /** The system property that sets the wait limit for every test, in seconds: {@code -Dmmi.testkit.waitLimit=30}. */
    public static final String WAIT_LIMIT_PROPERTY = "mmi.testkit.waitLimit";

    private static final Duration POLL = Duration.ofMillis(5);

    private volatile boolean active = true;
    private Duration waitLimit;
    private boolean mayRestart;
    private final Set<String> absent = new LinkedHashSet<>();
    private final Set<String> killed = new LinkedHashSet<>();
    private final List<Call> calls = new ArrayList<>();
    private final List<LogLine> logs = new ArrayList<>();
    private int callsAwaited;
    private int logsAwaited;

    private Device(Duration waitLimit) {
        this.waitLimit = waitLimit;
    }

    /**
     * Programs the answers of the operation's later calls, for the rest of the test: the first
     * call takes the first answer, the next call the next one, and the last answer holds for every
     * call after it. {@code answer("sensors.startSensorCalibrate", "crash", "0")} crashes the
     * service once and then answers 0.
     *
     * @param operation the operation the library calls, such as {@code "sensors.startSensorSelfTest"}
     * @param answers each one value ({@code "5"}, {@code "true"}, {@code "\"60,90\""}); the values
     *     the operation hands to its callback, separated by commas ({@code "3,\"open at 4\""};
     *     missing trailing values become 0, false, "" or []); texts as JSON strings, as
     *     {@code bytes:HEX} or as a bare word; or one of the device's keywords, which the
     *     overview's table of answer forms lists: {@code "crash"}, for one, kills the service in
     *     the middle of the call, and it registers again after the
     *     {@linkplain #restartDelay restart delay} (see {@link #waitForRestarts()})
     * @throws IllegalArgumentException for an unknown service or operation, no answer, or an
     *     answer the operation cannot give; the message names what is accepted
     */
    public synchronized void answer(String operation, String... answers) {
        Objects.requireNonNull(operation, "operation");
        Objects.requireNonNull(answers, "answers");
        String call = "answer(" + Arrays.stream(answers).map(a -> quote(a)).collect(Collectors.joining(", ",
                quote(operation) + (answers.length > 0 ? ", " : ""), ")"));
        requireActive(call);
        Catalogue.Operation op = Names.operation(call, operation);
        if (answers.length == 0) {
            throw new IllegalArgumentException(call + ": give at least one answer; accepted answers: "
                    + Names.answerForms());
        }
        String error = SimulatedDevice.programSequence(op.service(), op.name(), answers);
        if (error != null) {
            throw new IllegalArgumentException(call + ": " + error + "; accepted answers: " + Names.answerForms());
        }
        if (Arrays.stream(answers).anyMatch(a -> a.strip().equals(Names.CRASH))) {
            mayRestart = true;
        }
    }

    /**
     * Makes the operation's service take that long before it answers each later call, for the
     * rest of the test, as a slow service on a device does: the app's own watchdog can be tested.
     *
     * @throws IllegalArgumentException for an unknown operation or a negative delay
     */
    public synchronized void delay(String operation, Duration delay) {
        String call = "delay(" + quote(operation) + ", " + delay + ")";
        requireActive(call);
        Catalogue.Operation op = Names.operation(call, operation);
        String error = SimulatedDevice.setDelay(op.service(), op.name(), millis(call, delay));
        if (error != null) {
            throw new IllegalArgumentException(call + ": " + error);
        }
    }

    /**
     * How long a service that {@code "crash"}ed takes to register again, for the rest of the test:
     * 300 ms unless changed. {@code Duration.ZERO} makes crash tests fast.
     *
     * @throws IllegalArgumentException for a negative delay
     */
    public synchronized void restartDelay(Duration delay) {
        String call = "restartDelay(" + delay + ")";
        requireActive(call);
        SimulatedDevice.setRestartDelay(millis(call, delay));
    }

    /**
     * Kills the service if it runs and has it register again after the delay, returning at once:
     * the library's reconnect waits for it, as on a device where a service comes up late.
     * {@link #waitForRestarts()} waits for the registration.
     *
     * @throws IllegalArgumentException for an unknown service or a negative delay
     * @throws IllegalStateException when the service is absent in this test
     */
    public synchronized void reviveAfter(String service, Duration delay) {
        String call = "reviveAfter(" + quote(service) + ", " + delay + ")";
        requireActive(call);
        requirePresent(call, Names.service(call, service));
        long ms = millis(call, delay);
        if (!killed.contains(service)) {
            SimulatedDevice.kill(service);
            bounded("the library to handle the death of " + service, SimulatedDevice::waitIdle);
        }
        SimulatedDevice.reviveAfter(service, ms);
        killed.remove(service);
        mayRestart = true;
    }

    /**
     * Takes the service off the device for the rest of the test, as if the device had none: the
     * library's handle of it is empty and every other handle connected, and its methods answer
     * their failure values. The reports it takes to get there are not in {@link #calls()} or
     * {@link #logs()}.
     *
     * @throws IllegalArgumentException for an unknown service, naming the known ones
     * @throws IllegalStateException while another service is killed
     */
    public synchronized void absent(String service) {
        String call = "absent(" + quote(service) + ")";
        requireActive(call);
        requireNoOtherKilled(call, Names.service(call, service));
        record();
        SimulatedDevice.withdraw(service);
        absent.add(service);
        killed.remove(service);
        reconnect();
        bounded("the library to reconnect without " + service, SimulatedDevice::waitIdle);
        drop();
    }

    /**
     * Makes the service offer only its version 1.0 for the rest of the test, as an older device
     * would: the library's casts to 1.1 answer empty, so the methods that need 1.1 fail. The
     * service is registered again to get there (running afterwards even if the test had killed
     * it); those reports are not in {@link #calls()} or {@link #logs()}.
     *
     * @throws IllegalArgumentException for a service without a version 1.1: only factory, display
     *     and sensors have one
     * @throws IllegalStateException when the service is absent in this test, or while another
     *     service is killed
     */
    public synchronized void onlyV10(String service) {
        String call = "onlyV10(" + quote(service) + ")";
        requireActive(call);
        requirePresent(call, Names.service(call, service));
        requireNoOtherKilled(call, service);
        try {
            SimulatedDevice.setOnlyV10(service, true);
        } catch (IllegalArgumentException e) {
            throw new IllegalArgumentException(call + ": " + e.getMessage(), e);
        }
        record();
        SimulatedDevice.kill(service);
        SimulatedDevice.revive(service);
        killed.remove(service);
        bounded("the library to reconnect to " + service + " 1.0", SimulatedDevice::waitIdle);
        drop();
    }

    /**
     * Kills the service, as a crash on the device would, and returns once the library has handled
     * the death report: it releases every handle, so every method answers its failure value until
     * a service registers again. The report's log lines are in {@link #logs()}.
     *
     * @throws IllegalStateException when the service is absent in this test, or the library did
     *     not handle the report within the wait limit
     */
    public synchronized void kill(String service) {
        String call = "kill(" + quote(service) + ")";
        requireActive(call);
        requirePresent(call, Names.service(call, service));
        SimulatedDevice.kill(service);
        killed.add(service);
        bounded("the library to handle the death of " + service, SimulatedDevice::waitIdle);
    }

    /**
     * Registers a killed service again and returns once the library has handled the registration
     * report: it reconnects every service. Nothing happens for a running service. While another
     * service stays killed, the library's reconnect waits for that one, as on a device: this
     * returns at once, and every method answers its failure value until the last killed service is
     * revived.
     *
     * @throws IllegalStateException when the service is absent in this test, or the library did
     *     not handle the report within the wait limit
     */
    public synchronized void revive(String service) {
        String call = "revive(" + quote(service) + ")";
        requireActive(call);
        requirePresent(call, Names.service(call, service));
        SimulatedDevice.revive(service);
        killed.remove(service);
        if (killed.isEmpty()) {
            bounded("the library to reconnect after " + service + " registered", SimulatedDevice::waitIdle);
        }
    }

    /**
     * Returns once every service that crashed in the middle of a call or was revived with
     * {@link #reviveAfter} has registered again and the library has handled the reports.
     *
     * @throws IllegalStateException at once when this test programmed no {@code "crash"} and
     *     revived nothing later, so nothing could register; after the wait limit when a
     *     registration or its handling did not come (the library's reconnect waits for every
     *     killed service: revive them first)
     */
    public synchronized void waitForRestarts() {
        requireActive("waitForRestarts()");
        if (!mayRestart && SimulatedDevice.pendingRegistrations().isEmpty()) {
            throw new IllegalStateException("waitForRestarts(): nothing in this test can restart: no answer "
                    + "\"crash\" was programmed and no reviveAfter(...) was made");
        }
        String what = "the crashed or late services to register and the library to reconnect"
                + (killed.isEmpty() ? "" : " (" + String.join(", ", killed)
                        + " killed in this test: the library's reconnect waits for it; revive it first)");
        bounded(what, SimulatedDevice::waitRestarts);
    }

    /**
     * How long each later wait of this test may take before it fails; 10 seconds unless the
     * system property {@value #WAIT_LIMIT_PROPERTY} says otherwise.
     *
     * @throws IllegalArgumentException for a limit that is not positive
     */
    public synchronized void waitLimit(Duration limit) {
        String call = "waitLimit(" + limit + ")";
        requireActive(call);
        if (limit.isNegative() || limit.isZero()) {
            throw new IllegalArgumentException(call + ": give a positive duration");
        }
        waitLimit = limit;
    }

    /** Every call that reached a service since the test began, oldest first. */
    public synchronized List<Call> calls() {
        requireActive("calls()");
        record();
        return List.copyOf(calls);
    }

    /**
     * The calls of one operation since the test began, oldest first.
     *
     * @param operation such as {@code "light.setLightBrightness"}
     * @throws IllegalArgumentException for an unknown service or operation
     */
    public synchronized List<Call> calls(String operation) {
        String call = "calls(" + quote(operation) + ")";
        requireActive(call);
        Catalogue.Operation op = Names.operation(call, operation);
        record();
        return calls.stream().filter(c -> matches(c, op)).toList();
    }

    /**
     * Every line written to the platform log since the test began, oldest first: the library's
     * lines have an empty {@link LogLine#tag()} and a {@link LogLine#text()} such as
     * {@code "KxMMITest_jni: GetBsn, ret: 0"}, without the trailing newline the library writes.
     */
    public synchronized List<LogLine> logs() {
        requireActive("logs()");
        record();
        return List.copyOf(logs);
    }

    /**
     * The next call of the operation in this test, made already or within the timeout, for an app
     * that calls from its own threads. Each call is returned once: the next {@code awaitCall} of
     * the same operation returns the call after it.
     *
     * @throws AssertionError when no such call came within the timeout, listing the calls that did
     * @throws IllegalArgumentException for an unknown service or operation
     */
    public Call awaitCall(String operation, Duration timeout) {
        String call = "awaitCall(" + quote(operation) + ", " + timeout + ")";
        requireActive(call);
        Catalogue.Operation op = Names.operation(call, operation);
        long end = System.nanoTime() + timeout.toNanos();
        while (true) {
            // The lock is held only to look, so that other threads may use the device meanwhile.
            synchronized (this) {
                requireActive(call);
                record();
                for (int i = callsAwaited; i < calls.size(); i++) {
                    if (matches(calls.get(i), op)) {
                        callsAwaited = i + 1;
                        return calls.get(i);
                    }
                }
                if (System.nanoTime() - end >= 0) {
                    throw new AssertionError(call + ": no call of " + operation + " came; the test's calls: " + calls);
                }
            }
            pause(call);
        }
    }

    /**
     * The next log line in this test that the predicate accepts, written already or within the
     * timeout. Each line is returned once: the next {@code awaitLog} looks at the lines after it.
     *
     * @throws AssertionError when no such line came within the timeout, listing the lines that did
     */
    public LogLine awaitLog(Predicate<LogLine> predicate, Duration timeout) {
        String call = "awaitLog(..., " + timeout + ")";
        requireActive(call);
        Objects.requireNonNull(predicate, "predicate");
        long end = System.nanoTime() + timeout.toNanos();
        while (true) {
            synchronized (this) {
                requireActive(call);
                record();
                for (int i = logsAwaited; i < logs.size(); i++) {
                    if (predicate.test(logs.get(i))) {
                        logsAwaited = i + 1;
                        return logs.get(i);
                    }
                }
                if (System.nanoTime() - end >= 0) {
                    throw new AssertionError(call + ": no matching log line came; the test's lines: " + logs);
                }
            }
            pause(call);
        }
    }

    /** The wait limit every test starts with. */
    static Duration defaultWaitLimit() {
        String value = System.getProperty(WAIT_LIMIT_PROPERTY);
        if (value == null) {
            return Duration.ofSeconds(10);
        }
        try {
            Duration limit = Duration.ofMillis(Math.round(Double.parseDouble(value) * 1000));
            if (!limit.isNegative() && !limit.isZero()) {
                return limit;
            }
        } catch (NumberFormatException e) {
            // Refused below, with the property named.
        }
        throw new IllegalStateException("-D" + WAIT_LIMIT_PROPERTY + "=" + value
                + ": give a positive number of seconds, such as 30");
    }

    /**
     * Puts the device back to healthy for a new test and returns that test's device. A fresh
     * connect pass follows even when every service already runs: it clears what the library
     * remembers between calls.
     */
    static Device begin(Library.StaticFields libraryFields) {
        Device device = new Device(defaultWaitLimit());
        SimulatedDevice.reset();
        device.reconnect();
        device.bounded("the reset before the test: the library to reconnect every service", SimulatedDevice::waitIdle);
        drop();
        libraryFields.restore();
        return device;
    }

    /** Ends the test's hold; takes no lock, so a test thread stuck in a wait cannot block it. */
    void end() {
        active = false;
    }

    /** Makes the library connect every service again, through one death and one registration. */
    private void reconnect() {
        for (String service : Names.services()) {
            if (!absent.contains(service) && !killed.contains(service)) {
                SimulatedDevice.kill(service);
                SimulatedDevice.revive(service);
                return;
            }
        }
    }

    /**
     * Runs a wait of the device's on a thread of its own and gives up after the wait limit or on
     * an interrupt: the test's thread never waits in native code, so JUnit's timeouts can end it.
     */
    private void bounded(String what, java.util.function.LongPredicate wait) {
        Waits.within(waitLimit, what, wait);
    }

    private void record() {
        calls.addAll(SimulatedDevice.takeCallRecords());
        logs.addAll(SimulatedDevice.takeLogLines());
    }

    private static void drop() {
        SimulatedDevice.takeCallRecords();
        SimulatedDevice.takeLogLines();
    }

    private static boolean matches(Call call, Catalogue.Operation op) {
        return call.service().equals(op.service()) && call.operation().equals(op.name());
    }

    private static void pause(String call) {
        try {
            Thread.sleep(POLL.toMillis());
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            throw new IllegalStateException(call + ": interrupted", e);
        }
    }

    private static long millis(String call, Duration delay) {
        if (delay.isNegative()) {
            throw new IllegalArgumentException(call + ": give a duration of zero or more");
        }
        return delay.toMillis();
    }

    private static String quote(String text) {
        return text == null ? "null" : "\"" + text + "\"";
    }

    private void requireActive(String call) {
        if (!active) {
            throw new IllegalStateException(call + ": this device belongs to a test of SimulatedDeviceExtension "
                    + "that has ended; use the one handed to the running test or its @BeforeEach/@AfterEach methods");
        }
    }

    private void requirePresent(String call, String service) {
        if (absent.contains(service)) {
            throw new IllegalStateException(call + ": " + service + " is absent in this test");
        }
    }

    /** The library's reconnect would wait for a killed service, and this test with it. */
    private void requireNoOtherKilled(String call, String service) {
        Set<String> others = new LinkedHashSet<>(killed);
        others.remove(service);
        if (!others.isEmpty()) {
            throw new IllegalStateException(call + ": " + String.join(", ", others) + " killed in this test, and the "
                    + "library's reconnect would wait for it; set services absent or 1.0-only before killing any");
        }
    }
}
