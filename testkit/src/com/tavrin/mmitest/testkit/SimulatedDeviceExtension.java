package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.List;
import java.util.concurrent.ForkJoinPool;
import java.util.concurrent.Semaphore;
import java.util.stream.Collectors;

import org.junit.jupiter.api.extension.BeforeEachCallback;
import org.junit.jupiter.api.extension.ExtensionContext;
import org.junit.jupiter.api.extension.ExtensionContext.Namespace;
import org.junit.jupiter.api.extension.ExtensionContext.Store.CloseableResource;
import org.junit.jupiter.api.extension.ParameterContext;
import org.junit.jupiter.api.extension.ParameterResolver;

/**
 * Runs each test in front of a healthy simulated device: {@code @ExtendWith(SimulatedDeviceExtension.class)}
 * on a test class, and a {@link Device} parameter where the test wants one.
 *
 * <p>The first test loads the simulated device and then the library, through the app's
 * {@code MmiNativeManager} as found by the test class's class loader; a load that fails fails every
 * test with the reason. Before each test the device is put back to healthy with the library's
 * handles connected, its static fail-info fields as loading left them and nothing recorded (see
 * {@link Device}).
 *
 * <p>The library and the device are one per process, so tests that use this extension take turns:
 * each holds a process-wide lock from before its {@code @BeforeEach} methods until after its
 * {@code @AfterEach} methods. With JUnit's parallel execution turned on, they still run one at a
 * time while other tests run beside them.
 *
 * <p>Calls that reach the device while no such test holds it are stray: made by a test without
 * this extension, or by a thread that outlived its test. The next test that uses the extension
 * fails before it runs, naming them. Calls made by another test, or by a leftover thread, while a
 * test holds the device cannot be told apart from that test's own: in a parallel run, every test
 * that calls the library must use this extension.
 */
public final class SimulatedDeviceExtension implements BeforeEachCallback, ParameterResolver {
    private static final Namespace NAMESPACE = Namespace.create(SimulatedDeviceExtension.class);
    private static final Semaphore TURN = new Semaphore(1, true);

    /** The most stray calls a message lists. */
    private static final int STRAY_SHOWN = 10;

    /**
     * Loads the library once, waits for this test's turn, reports stray calls and resets the
     * device.
     */
    @Override
    public void beforeEach(ExtensionContext context) throws InterruptedException {
        ExtensionContext.Store store = context.getStore(NAMESPACE);
        if (store.get(Turn.class) != null) {
            return;  // registered twice on the same test
        }
        Library.StaticFields fields = Library.load(context.getRequiredTestClass().getClassLoader());
        Turn turn = Turn.take();
        store.put(Turn.class, turn);
        List<Call> stray = SimulatedDevice.takeCallRecords();
        turn.device = Device.begin(fields);
        if (!stray.isEmpty()) {
            throw new IllegalStateException(strayMessage(stray));
        }
    }

    static String strayMessage(List<Call> stray) {
        return stray.size() + " stray call" + (stray.size() == 1 ? "" : "s") + " reached the simulated device "
                + "from outside a test of SimulatedDeviceExtension (a test without the extension, or a thread that "
                + "outlived its test): " + stray.stream().limit(STRAY_SHOWN).map(Call::toString).collect(Collectors.joining(", "))
                + (stray.size() > STRAY_SHOWN ? ", ..." : "") + ". Add @ExtendWith(SimulatedDeviceExtension.class) to "
                + "every test class that calls the library, and end the threads a test starts before it returns";
    }

    @Override
    public boolean supportsParameter(ParameterContext parameter, ExtensionContext context) {
        return parameter.getParameter().getType() == Device.class;
    }

    @Override
    public Object resolveParameter(ParameterContext parameter, ExtensionContext context) {
        Turn turn = context.getStore(NAMESPACE).get(Turn.class, Turn.class);
        if (turn == null || turn.device == null) {
            throw new org.junit.jupiter.api.extension.ParameterResolutionException("a Device is handed to test "
                    + "methods and their @BeforeEach/@AfterEach methods only");
        }
        return turn.device;
    }

    /** One test's hold on the device; JUnit closes it when the test's context closes. */
    private static final class Turn implements CloseableResource {
        Device device;

        static Turn take() throws InterruptedException {
            // A parallel run's worker threads belong to a fork-join pool, which may add a worker
            // while this one waits.
            ForkJoinPool.managedBlock(new ForkJoinPool.ManagedBlocker() {
                @Override
                public boolean block() throws InterruptedException {
                    TURN.acquire();
                    return true;
                }

                @Override
                public boolean isReleasable() {
                    return TURN.tryAcquire();
                }
            });
            return new Turn();
        }

        @Override
        public void close() {
            if (device != null) {
                device.end();
            }
            // What the test's calls left unread is its own, not stray.
            SimulatedDevice.takeCallRecords();
            TURN.release();
        }
    }
}
