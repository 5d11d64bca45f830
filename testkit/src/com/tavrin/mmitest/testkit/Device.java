package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Objects;
import java.util.Set;

/**
 * The simulated device as the running test sees it. {@link SimulatedDeviceExtension} hands it to
 * a test method (or a {@code @BeforeEach}/{@code @AfterEach} method) as a parameter, after putting
 * the device back to healthy: every service registered with its newest version, every operation
 * answering as a healthy device does, the library's handles connected, nothing recorded.
 *
 * <p>Everything a test changes here lasts until the test ends. A {@code Device} used outside a
 * test of the extension (in {@code @BeforeAll}, or kept after the test) throws
 * {@link IllegalStateException}. Services are named {@code factory, display, touchscreen, sensors,
 * power, light, otherdevices}.
 */
public final class Device {
    /** The services, in the order the library connects them. */
    public static final List<String> SERVICES =
            List.of("factory", "display", "touchscreen", "sensors", "power", "light", "otherdevices");

    /** What {@link #answer} accepts, as its errors name it. */
    static final String ANSWER_FORMS = "values separated by commas (7, -3, true, \"text\", [1,2,3], bytes:41ff42), "
            + "nocallback (callback operations only), transport-error or crash";

    /** The static String fields of MmiNativeManager that the library writes. */
    private static final List<String> WRITTEN_FIELDS = List.of("sTpCapacitanceFailInfo", "sTouchKeyCapacitanceFailInfo");

    static final Device INSTANCE = new Device();

    private boolean active;
    private final Set<String> absent = new LinkedHashSet<>();
    private final Set<String> killed = new LinkedHashSet<>();
    private final List<String> calls = new ArrayList<>();
    private final List<String> logs = new ArrayList<>();

    private Device() {}

    /**
     * Programs what every later call of the operation answers, for the rest of the test.
     *
     * @param serviceDotOperation the service and the operation the library calls, such as
     *     {@code "sensors.startSensorSelfTest"}
     * @param answer one value ({@code "5"}, {@code "true"}, {@code "\"60,90\""}); the values the
     *     operation hands to its callback, separated by commas ({@code "3,\"open at 4\""}, missing
     *     trailing values become 0, false, "" or []); texts as JSON strings or as
     *     {@code bytes:HEX}; {@code "nocallback"} (the service returns without calling back),
     *     {@code "transport-error"} (the call fails in the middle) or {@code "crash"} (the service
     *     dies in the middle of the call, and registers again 300 ms later, see
     *     {@link #waitForRestarts()})
     * @throws IllegalArgumentException for an unknown service or operation, or an answer the
     *     operation cannot give; the message names what is accepted
     */
    public synchronized void answer(String serviceDotOperation, String answer) {
        Objects.requireNonNull(serviceDotOperation, "serviceDotOperation");
        Objects.requireNonNull(answer, "answer");
        String call = "answer(\"" + serviceDotOperation + "\", \"" + answer + "\")";
        requireActive(call);
        int dot = serviceDotOperation.indexOf('.');
        if (dot < 0) {
            throw new IllegalArgumentException(call + ": expected SERVICE.OPERATION such as "
                    + "sensors.startSensorSelfTest; services: " + String.join(", ", SERVICES));
        }
        String service = knownService(call, serviceDotOperation.substring(0, dot));
        String operation = serviceDotOperation.substring(dot + 1);
        List<String> operations = List.of(SimulatedDevice.operations(service));
        if (!operations.contains(operation)) {
            throw new IllegalArgumentException(call + ": " + service + " has no operation \"" + operation
                    + "\"; accepted: " + String.join(", ", operations));
        }
        String error = SimulatedDevice.program(service, operation, answer);
        if (error != null) {
            throw new IllegalArgumentException(call + ": " + error + "; accepted answers: " + ANSWER_FORMS);
        }
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
        String call = "absent(\"" + service + "\")";
        requireActive(call);
        requireNoOtherKilled(call, knownService(call, service));
        record();
        SimulatedDevice.withdraw(service);
        absent.add(service);
        killed.remove(service);
        reconnect();
        SimulatedDevice.waitIdle();
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
        String call = "onlyV10(\"" + service + "\")";
        requireActive(call);
        requirePresent(call, knownService(call, service));
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
        SimulatedDevice.waitIdle();
        drop();
    }

    /**
     * Kills the service, as a crash on the device would, and returns once the library has handled
     * the death report: it releases every handle, so every method answers its failure value until
     * a service registers again. The report's log lines are in {@link #logs()}.
     *
     * @throws IllegalStateException when the service is absent in this test
     */
    public synchronized void kill(String service) {
        String call = "kill(\"" + service + "\")";
        requireActive(call);
        requirePresent(call, knownService(call, service));
        SimulatedDevice.kill(service);
        killed.add(service);
        SimulatedDevice.waitIdle();
    }

    /**
     * Registers a killed service again and returns once the library has handled the registration
     * report: it reconnects every service. Nothing happens for a running service. While another
     * service stays killed, the library's reconnect waits for that one, as on a device: this
     * returns at once, and every method answers its failure value until the last killed service is
     * revived.
     *
     * @throws IllegalStateException when the service is absent in this test
     */
    public synchronized void revive(String service) {
        String call = "revive(\"" + service + "\")";
        requireActive(call);
        requirePresent(call, knownService(call, service));
        SimulatedDevice.revive(service);
        killed.remove(service);
        if (killed.isEmpty()) {
            SimulatedDevice.waitIdle();
        }
    }

    /**
     * Returns once every service that crashed in the middle of a call has registered again and the
     * library has handled the reports.
     */
    public synchronized void waitForRestarts() {
        requireActive("waitForRestarts()");
        SimulatedDevice.waitRestarts();
    }

    /**
     * Every call that reached a service since the test began, oldest first, as
     * {@code "service.operation(arguments)"}: {@code "sensors.startSensorSelfTest(1, 1)"}.
     */
    public synchronized List<String> calls() {
        requireActive("calls()");
        record();
        return List.copyOf(calls);
    }

    /**
     * Every line written to the platform log since the test began, oldest first, as
     * {@code "P TEXT"} with P one of {@code V D I W E F}:
     * {@code "D KxMMITest_jni: GetBsn, ret: 0"}.
     */
    public synchronized List<String> logs() {
        requireActive("logs()");
        record();
        return List.copyOf(logs);
    }

    /** {@link #calls()} as records. */
    public List<Call> callRecords() {
        return calls().stream().map(Call::parse).toList();
    }

    /** {@link #logs()} as records. */
    public List<LogLine> logLines() {
        return logs().stream().map(LogLine::parse).toList();
    }

    /**
     * Puts the device back to healthy for a new test. A fresh connect pass follows even when every
     * service already runs: it clears what the library remembers between calls.
     */
    synchronized void begin(StaticFields libraryFields) {
        SimulatedDevice.reset();
        absent.clear();
        killed.clear();
        reconnect();
        SimulatedDevice.waitIdle();
        drop();
        calls.clear();
        logs.clear();
        libraryFields.restore();
        active = true;
    }

    synchronized void end() {
        active = false;
    }

    /** Makes the library connect every service again, through one death and one registration. */
    private void reconnect() {
        for (String service : SERVICES) {
            if (!absent.contains(service) && !killed.contains(service)) {
                SimulatedDevice.kill(service);
                SimulatedDevice.revive(service);
                return;
            }
        }
    }

    private void record() {
        calls.addAll(List.of(SimulatedDevice.takeCalls()));
        logs.addAll(List.of(SimulatedDevice.takeLogs()));
    }

    private static void drop() {
        SimulatedDevice.takeCalls();
        SimulatedDevice.takeLogs();
    }

    private void requireActive(String call) {
        if (!active) {
            throw new IllegalStateException(call + ": the device belongs to a running test of SimulatedDeviceExtension; "
                    + "use it in the test or its @BeforeEach/@AfterEach methods");
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

    private static String knownService(String call, String service) {
        if (!SERVICES.contains(service)) {
            throw new IllegalArgumentException(call + ": unknown service \"" + service + "\"; accepted: "
                    + String.join(", ", SERVICES));
        }
        return service;
    }

    /** The library's static String fields as they were after loading, put back for each test. */
    static final class StaticFields {
        private final List<java.lang.reflect.Field> fields = new ArrayList<>();
        private final List<Object> values = new ArrayList<>();

        StaticFields(Class<?> manager) throws IllegalAccessException {
            for (String name : WRITTEN_FIELDS) {
                java.lang.reflect.Field field;
                try {
                    field = manager.getDeclaredField(name);
                } catch (NoSuchFieldException e) {
                    continue;  // the app's copy may lack it; the library then logs and skips it
                }
                field.setAccessible(true);
                fields.add(field);
                values.add(field.get(null));
            }
        }

        void restore() {
            try {
                for (int i = 0; i < fields.size(); i++) {
                    fields.get(i).set(null, values.get(i));
                }
            } catch (IllegalAccessException e) {
                throw new IllegalStateException("cannot reset " + e.getMessage(), e);
            }
        }
    }
}
