/**
 * Runs JUnit 5 tests of the app's Java code against the real native library in a plain JVM, in
 * front of a simulated device whose seven vendor services a test programs, removes, kills and
 * revives.
 *
 * <pre>{@code
 * @ExtendWith(SimulatedDeviceExtension.class)
 * class SelfTestTest {
 *     @Test
 *     void failingSelfTest(Device device) {
 *         device.answer("sensors.getSensorSelfTestResult", "5");
 *         assertEquals(5, MmiNativeManager.getSensorSelfTestResultNative(1));
 *         assertEquals(List.of("sensors.getSensorSelfTestResult(1)"), device.calls());
 *         assertEquals(List.of("D KxMMITest_jni: GetSensorSelfTestResult, sensorId: 1, result: 5"), device.logs());
 *     }
 * }
 * }</pre>
 *
 * <p>The library is {@code libKxMMI_jni} as built for this host; the app's
 * {@code com.tavrin.mmitest.controller.MmiNativeManager} and its record models come from the app
 * (or from the kit's separate app-API jar) and must be on the class path. The JVM needs
 * {@code -Djava.library.path=<kit>/lib}.
 */
package com.tavrin.mmitest.testkit;
