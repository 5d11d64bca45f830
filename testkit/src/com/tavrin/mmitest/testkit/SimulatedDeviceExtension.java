package com.tavrin.mmitest.testkit;

import java.util.concurrent.ForkJoinPool;
import java.util.concurrent.Semaphore;

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
 */
public final class SimulatedDeviceExtension implements BeforeEachCallback, ParameterResolver {
    private static final Namespace NAMESPACE = Namespace.create(SimulatedDeviceExtension.class);
    private static final Semaphore TURN = new Semaphore(1, true);

    /** Loads the library once, waits for this test's turn and resets the device. */
    @Override
    public void beforeEach(ExtensionContext context) throws InterruptedException {
        ExtensionContext.Store store = context.getStore(NAMESPACE);
        if (store.get(Turn.class) != null) {
            return;  // registered twice on the same test
        }
        Device.StaticFields fields = Library.load(context.getRequiredTestClass().getClassLoader());
        store.put(Turn.class, Turn.take());
        Device.INSTANCE.begin(fields);
    }

    @Override
    public boolean supportsParameter(ParameterContext parameter, ExtensionContext context) {
        return parameter.getParameter().getType() == Device.class;
    }

    @Override
    public Object resolveParameter(ParameterContext parameter, ExtensionContext context) {
        return Device.INSTANCE;
    }

    /** One test's hold on the device; JUnit closes it when the test's context closes. */
    private static final class Turn implements CloseableResource {
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
            Device.INSTANCE.end();
            TURN.release();
        }
    }
}
