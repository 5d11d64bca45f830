package com.tavrin.mmitest.controller;

import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

/**
 * The factory-test requests that the native library carries to the device's vendor services.
 *
 * <p>Loading this class loads {@code libKxMMI_jni}, which connects to the services and binds every
 * method below. No method throws: a request that cannot reach its service answers a failure value
 * (-1 for int and long, false for boolean, "" for String, null for int[] unless a method says
 * otherwise), and the reason goes to the platform log. Between a service's death and its return
 * every service is released, so every method answers its failure value.
 */
public final class MmiNativeManager {
    /** Failure description of the last touch-panel capacitance test; "" when none was given. */
    public static String sTpCapacitanceFailInfo = "";
    /** Failure description of the last touch-key capacitance test; "" when none was given. */
    public static String sTouchKeyCapacitanceFailInfo = "";

    static {
        System.loadLibrary("KxMMI_jni");
    }

    private MmiNativeManager() {}

    /** Hands raw pressure data to the sensor service (testCtrl 11 answers modulo 144000); -1 without the sensor service. */
    public static native int setApPressureCalibExternNative(int sensorId, int testCtrl, int[] rawData);

    /** Whether the touch panel senses pressure (a true answer is remembered until services reconnect); false on failure. */
    public static native boolean isTpPressureSupportNative();

    /** Pressure calibration status of the touch panel; -1 without the touchscreen service. */
    public static native int getTpPressureStatusNative();

    /** Result of the pressure verification at the given index; -1 without the touchscreen service. */
    public static native int getTpPressureVerifyResultNative(int index);

    /** Switches pressure calibration mode with the touch panel's type 0 or type 1 control; false on failure or another type. */
    public static native boolean controlTpPressureCalibModeNative(int type);

    /** Runs pressure calibration step index with the type 0 or 1 procedure; false on failure or another type. */
    public static native boolean setTpPressureCalibrationNative(int type, int index);

    /** Runs pressure verification step index with the type 0 or 1 procedure; false on failure or another type. */
    public static native boolean setTpPressureVerificationNative(int type, int index);

    /** How long a pressure step waits, modulo 144000; -1 without the touchscreen service. */
    public static native long getTpPressureWaitingTimeNative();

    /** Checks a pressure calibration position; -1 without the touchscreen service. */
    public static native int checkTpPressureCalibPositionNative(int a, int b, int c);

    /** Whether the device runs a factory build; false on failure. */
    public static native boolean isFactoryVersionNative();

    /** Name of the manufacturing file, whatever the service's code; "" without the factory service. */
    public static native String getManufactureFileNameNative();

    /** Asks the factory service to release its resources; -1 without the factory service. */
    public static native int releaseFactoryHidlResourceNative();

    /** Records an MMI test result; the service's code, -1 without the factory service. */
    public static native int setMmiResultNative(int first, int second);

    /** Touch-panel capacitance test; its code, with the failure text left in sTpCapacitanceFailInfo; -1 on failure. */
    public static native int getCapacitanceTestResultNative();

    /** Touch-key capacitance test; its code, with the failure text left in sTouchKeyCapacitanceFailInfo; -1 on failure. */
    public static native int getTouchKeyCapacitanceTestResultNative();

    /** Whether touch keys are present, as the service states it; -1 without the other-devices service. */
    public static native int getTouchKeySupportFlagNative();

    /** Capacitance calibration result text; "Capacitance Calibrate Failed" on any failure. */
    public static native String getCapacitanceCalibrateResultNative(int item);

    /** How long the sensor's calibration takes; -1 without the sensor service. */
    public static native int getSensorCalibrateDelayTimeNative(int sensorId);

    /** How long the sensor's self-test takes; -1 without the sensor service. */
    public static native int getSensorSelfTestDelayTimeNative(int sensorId);

    /** Starts a sensor calibration with a command code; the service's code, -1 without the sensor service. */
    public static native int startSensorCalibrateNative(int sensorId, int command);

    /** Starts a sensor self-test with a command code; the service's code, -1 without the sensor service. */
    public static native int startSensorSelfTestNative(int sensorId, int command);

    /** Result of the sensor's last calibration; -1 without the sensor service. */
    public static native int getSensorCalibrateResultNative(int sensorId);

    /** Result of the sensor's last self-test; -1 without the sensor service. */
    public static native int getSensorSelfTestResultNative(int sensorId);

    /** Sets a light's brightness; the service's code, -1 without the light service. */
    public static native int setLightBrightnessNative(int lightId, int brightness);

    /** The board serial number, whatever the service's code; "" without the factory service. */
    public static native String getBsnNative();

    /** Power state for a query such as "battery"; "" on a failing code or without the power service. */
    public static native String getPowerStateNative(String query);

    /** Calibration type the sensor uses, whatever the service's code; "" without the sensor service. */
    public static native String getSensorCalibrateTypeNative(int sensorId);

    /** Reports a station operation record; the service's code, -1 without the factory service. */
    public static native int sendBigDataOperationNative(BigDataOperation operation);

    /** Reports one measured test item; the service's code, -1 without the factory service. */
    public static native int sendBigDataValueNative(BigDataValue value);

    /** Checks the USB link speed for a scene; the service's code, -1 without the power service. */
    public static native int checkUsbSpeedNative(String scene);

    /** The MMI auto-start flag; "Error" when the read fails, "" without the factory service. */
    public static native String getMmiAutoStartFlagNative();

    /** Writes the MMI auto-start flag; the service's code, -1 without the factory service. */
    public static native int disableMmiAutoStartNative(String flag);

    /** The compass's raw-value limit; -1 without the sensor service. */
    public static native int getCompassRawValueLimitNative();

    /** The flag a manufacturing station left, whatever the service's code; "" without the factory service. */
    public static native String getManufactureStationFlagNative(int stationId);

    /** Records the station and test cycle (cycle -100 clears it); the service's code, -1 without factory 1.1. */
    public static native int setTestCycleNative(int stationId, int cycle);

    /** The manufacturing mode; -1 without version 1.1 of the factory service. */
    public static native int getManufactureModeNative();

    /** Switches the proximity sensor's external infrared mode; the service's code, -1 without the sensor service. */
    public static native int setProximitySensorExternalIrModeNative(int mode);

    /** Sets a power state for a test scene; the service's code, -1 without the power service. */
    public static native int setPowerStateNative(String testScene, String parameter);

    /** Result of the device-features check; -1 without the factory service. */
    public static native int getMmiDeviceFeaturesCheckResultNative(int item);

    /** Reads an oeminfo item; "" on a failing read or without version 1.1 of the factory service. */
    public static native String getOeminfoNative(int a, int b, int c);

    /** Switches a sensor on or off at a sampling rate; true when the service accepts, false otherwise. */
    public static native boolean sensorActivateNative(int sensorType, boolean enable, int samplingRate);

    /** Flicker frequency in hertz of the light a sensor sees (0 when none); -1 on failure. */
    public static native int getFlickerFrequencyNative(int value);

    /** Sends a parameter command to a sensor and answers its text; "" without version 1.1 of the sensor service. */
    public static native String handleSensorParameterNative(int sensorId, int mainCmd, int subCmd, int length);

    /** Sends a parameter command to a sensor and answers its 64 values; null without version 1.1 of the sensor service. */
    public static native int[] handleAmbientLightParameterNative(int sensorId, int mainCmd, int subCmd, int length);

    /** Sets a touch-panel feature's configuration; the service's code, -1 without the touchscreen service. */
    public static native int setTouchScreenFeatureConfigNative(int feature, String config);

    /** The display's refresh-rate configuration; "0" without multi-fps support, else "FAILED:getDisplayFpsConfig" on failure. */
    public static native String getScreenFpsConfigNative();

    /** Switches the refresh rate; true on success or without multi-fps support, false on failure. */
    public static native boolean setScreenFpsNative(int freqIndex);

    /** Sends signature data for verification; the service's verdict, -1 for an empty array or without the factory service. */
    public static native int getVerifySignatureResultNative(byte[] signature);

    /** Sets the memory-card test mode; the service's code, -1 without the factory service. */
    public static native int setMockCardTestModeNative(String mode);

    /** The memory-card test result, whatever the service's code; "" without the factory service. */
    public static native String getMockCardTestResultNative();

    /** The rotary crown's self-test text; "error" when the test fails, "" without the touchscreen service. */
    public static native String getRotaryCrownSelfTestNative();

    /** Runs a high-temperature intercept command; its result code, -1 on failure. */
    public static native int executeHighTemperInterceptCmdNative(String testScene, String parameters);
}
