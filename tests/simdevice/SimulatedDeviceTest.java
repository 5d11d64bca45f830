package com.tavrin.mmitest.sim;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertInstanceOf;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.model.BigDataOperation;

import java.lang.reflect.Modifier;
import java.util.List;
import java.util.Map;

import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;

/**
 * The device's Java face as the JNI bridge builds it: the catalogue, calls as records, the link
 * state. Runs in one JVM with the library loaded in front of the device. Answers, sequences, delays,
 * restarts and log lines through this face are the test kit's suite's to check.
 */
class SimulatedDeviceTest {
    @BeforeAll
    static void load() throws ClassNotFoundException {
        SimulatedDevice.captureLogs();
        SimulatedDevice.start();
        Class.forName(MmiNativeManager.class.getName());
        SimulatedDevice.waitIdle();
    }

    @BeforeEach
    void fresh() {
        SimulatedDevice.resetAnswers();
        SimulatedDevice.takeCallRecords();
        SimulatedDevice.takeLogLines();
    }

    @Test
    void catalogueDescribesServicesOperationsAndGrammar() {
        Catalogue c = SimulatedDevice.catalogue();
        assertEquals(List.of("factory", "display", "touchscreen", "sensors", "power", "light", "otherdevices"),
                c.serviceNames());
        assertEquals(List.of("factory", "display", "sensors"),
                c.services().stream().filter(Catalogue.Service::hasV11).map(Catalogue.Service::name).toList());
        Catalogue.Service factory = c.service("factory").orElseThrow();
        assertEquals("kxfactoryinterface_hal", factory.instance());
        Catalogue.Operation info = factory.operation("getFactoryInfo").orElseThrow();
        assertEquals(4, info.position());
        assertEquals(List.of(new Catalogue.Field("int32", "infoKind")), info.parameters());
        assertEquals("callback: int32 code, string value", info.shape());
        assertEquals("0,\"KX2611220001A7\"", info.healthyAnswerByKey().get(0));
        Catalogue.Operation brightness = c.service("light").orElseThrow().operation("setLightBrightness").orElseThrow();
        assertEquals("0", brightness.healthyAnswer());
        assertEquals(List.of("transport-error", "crash"),
                c.keywordsFor(brightness).stream().map(Catalogue.Keyword::word).toList());
        assertEquals(3, c.keywordsFor(info).size());
        assertTrue(c.forms().stream().anyMatch(f -> f.form().equals("word")));
    }

    /** The device's list must name exactly the static String fields the app's class has. */
    @Test
    void writtenFieldsAreTheManagersStaticStrings() {
        List<String> declared = java.util.Arrays.stream(MmiNativeManager.class.getDeclaredFields())
                .filter(f -> Modifier.isStatic(f.getModifiers()) && f.getType() == String.class)
                .map(java.lang.reflect.Field::getName).sorted().toList();
        assertEquals(declared, SimulatedDevice.catalogue().writtenFields().stream().sorted().toList());
    }

    @Test
    void callsArriveAsTypedValues() {
        MmiNativeManager.setLightBrightnessNative(3, 77);
        MmiNativeManager.sendBigDataOperationNative(new BigDataOperation(1, 2, 3, "SN\u0000\uD83D\uDE00", "ST", 4));
        List<Call> calls = SimulatedDevice.takeCallRecords();
        assertEquals(2, calls.size(), calls::toString);
        assertEquals(List.of(3, 77), calls.get(0).arguments());
        assertEquals("light.setLightBrightness(3, 77)", calls.get(0).toString());
        assertEquals(5, calls.get(0).position());
        Map<?, ?> op = assertInstanceOf(Map.class, calls.get(1).arguments().get(0));
        assertEquals(List.of("version", "commandId", "operation", "cycle", "station", "bsn"), List.copyOf(op.keySet()));
        assertEquals("SN\u0000\uD83D\uDE00", op.get("bsn"), "modified UTF-8 decoded back to the Java text");
        assertEquals(4, op.get("cycle"));
        assertEquals("factory.sendBigDataOperation({version: 1, commandId: 2, operation: 3, cycle: 4, "
                + "station: \"ST\", bsn: \"SN\\u0000\uD83D\uDE00\"})", calls.get(1).toString());
    }

    @Test
    void linkStateFollowsTheLibrarysHandles() {
        assertEquals(SimulatedDevice.catalogue().serviceNames(), SimulatedDevice.linkedServices());
        SimulatedDevice.kill("light");
        SimulatedDevice.waitIdle();
        assertEquals(List.of(), SimulatedDevice.linkedServices(), "a death releases every handle");
        SimulatedDevice.revive("light");
        SimulatedDevice.waitIdle();
        assertTrue(SimulatedDevice.linked("light"));
    }
}
