package kituser;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.testkit.Device;
import com.tavrin.mmitest.testkit.SimulatedDeviceExtension;

import java.util.List;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;

/** A user's test, written from the kit's README and Javadoc alone and compiled against the kit's jars. */
@ExtendWith(SimulatedDeviceExtension.class)
class KitUserTest {
    @Test
    void powerStateComesFromTheProgrammedService(Device device) {
        assertEquals("capacity=85,status=charging", MmiNativeManager.getPowerStateNative("battery"));
        device.answer("power.getPowerState", "0,\"capacity=12,status=discharging\"");
        assertEquals("capacity=12,status=discharging", MmiNativeManager.getPowerStateNative("battery"));
        assertEquals(List.of(List.of("battery"), List.of("battery")),
                device.calls("power.getPowerState").stream().map(Call::arguments).toList());
    }

    @Test
    void deadPowerServiceAnswersNothingUntilRevived(Device device) {
        device.kill("power");
        assertEquals("", MmiNativeManager.getPowerStateNative("battery"));
        assertTrue(device.logs().contains(new LogLine('E', "", "KxMMITest_jni: GetPowerState fail, g_kxPower is null")),
                device.logs()::toString);
        device.revive("power");
        assertEquals("capacity=85,status=charging", MmiNativeManager.getPowerStateNative("battery"));
    }

    @Test
    void displayWithoutVersion11CannotSwitchRates(Device device) {
        device.onlyV10("display");
        MmiNativeManager.setScreenFpsNative(2);
        assertEquals(List.of(), device.calls());
        assertThrows(IllegalArgumentException.class, () -> device.onlyV10("light"));
    }
}
