/**
 * Runs JUnit 5 tests of the app's Java code against the real native library in a plain JVM, in
 * front of a simulated device whose seven vendor services a test programs, slows, removes, kills
 * and revives.
 *
 * <pre>{@code
 * @ExtendWith(SimulatedDeviceExtension.class)
 * class SelfTestTest {
 *     @Test
 *     void failingSelfTest(Device device) {
 *         device.answer("sensors.getSensorSelfTestResult", "5");
 *         assertEquals(5, MmiNativeManager.getSensorSelfTestResultNative(1));
 *         assertEquals(List.of(1), device.calls("sensors.getSensorSelfTestResult").get(0).arguments());
 *         assertEquals("D KxMMITest_jni: GetSensorSelfTestResult, sensorId: 1, result: 5",
 *                 device.logs().get(0).toString());
 *     }
 * }
 * }</pre>
 *
 * <p>The overview page of this documentation lists every native with the operations it calls, its
 * healthy answer, its failure value and whether it needs a 1.1 service, and every operation with
 * the answers it can be told to give, as measured on the simulated device when the kit was built.
 *
 * <p>The kit's API is this package and the two records its {@link Device} hands out,
 * {@link com.tavrin.mmitest.sim.Call} and {@link com.tavrin.mmitest.sim.LogLine}. The other
 * classes of {@code com.tavrin.mmitest.sim} in the kit's jar drive the simulated device for the
 * kit; they are not part of its API and may change without notice.
 *
 * <p>The library is {@code libKxMMI_jni} as built for this host; the app's
 * {@code com.tavrin.mmitest.controller.MmiNativeManager} and its record models come from the app
 * (or from the kit's separate app-API jar) and must be on the class path. The JVM needs
 * {@code -Djava.library.path=<kit>/lib}, and on JDK 22 and newer
 * {@code --enable-native-access=ALL-UNNAMED}.
 */
package com.tavrin.mmitest.testkit;
