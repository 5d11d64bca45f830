package com.tavrin.mmitest.controller;

import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

/** The app's native API without executeHighTemperInterceptCmdNative. */
public final class MmiNativeManager {
    private MmiNativeManager() {}

    public static native int setApPressureCalibExternNative(int sensorId, int testCtrl, int[] rawData);
    public static native boolean isTpPressureSupportNative();
    public static native int getTpPressureStatusNative();
    public static native int getTpPressureVerifyResultNative(int index);
    public static native boolean controlTpPressureCalibModeNative(int type);
    public static native boolean setTpPressureCalibrationNative(int type, int index);
    public static native boolean setTpPressureVerificationNative(int type, int index);
    public static native long getTpPressureWaitingTimeNative();
    public static native int checkTpPressureCalibPositionNative(int a, int b, int c);
    public static native boolean isFactoryVersionNative();
    public static native String getManufactureFileNameNative();
    public static native int releaseFactoryHidlResourceNative();
    public static native int setMmiResultNative(int first, int second);
    public static native int getCapacitanceTestResultNative();
    public static native int getTouchKeyCapacitanceTestResultNative();
    public static native int getTouchKeySupportFlagNative();
    public static native String getCapacitanceCalibrateResultNative(int item);
    public static native int getSensorCalibrateDelayTimeNative(int sensorId);
    public static native int getSensorSelfTestDelayTimeNative(int sensorId);
    public static native int startSensorCalibrateNative(int sensorId, int command);
    public static native int startSensorSelfTestNative(int sensorId, int command);
    public static native int getSensorCalibrateResultNative(int sensorId);
    public static native int getSensorSelfTestResultNative(int sensorId);
    public static native int setLightBrightnessNative(int lightId, int brightness);
    public static native String getBsnNative();
    public static native String getPowerStateNative(String query);
    public static native String getSensorCalibrateTypeNative(int sensorId);
    public static native int sendBigDataOperationNative(BigDataOperation operation);
    public static native int sendBigDataValueNative(BigDataValue value);
    public static native int checkUsbSpeedNative(String scene);
    public static native String getMmiAutoStartFlagNative();
    public static native int disableMmiAutoStartNative(String flag);
    public static native int getCompassRawValueLimitNative();
    public static native String getManufactureStationFlagNative(int stationId);
    public static native int setTestCycleNative(int stationId, int cycle);
    public static native int getManufactureModeNative();
    public static native int setProximitySensorExternalIrModeNative(int mode);
    public static native int setPowerStateNative(String testScene, String parameter);
    public static native int getMmiDeviceFeaturesCheckResultNative(int item);
    public static native String getOeminfoNative(int a, int b, int c);
    public static native boolean sensorActivateNative(int sensorType, boolean enable, int samplingRate);
    public static native int getFlickerFrequencyNative(int value);
    public static native String handleSensorParameterNative(int sensorId, int mainCmd, int subCmd, int length);
    public static native int[] handleAmbientLightParameterNative(int sensorId, int mainCmd, int subCmd, int length);
    public static native int setTouchScreenFeatureConfigNative(int feature, String config);
    public static native String getScreenFpsConfigNative();
    public static native boolean setScreenFpsNative(int freqIndex);
    public static native int getVerifySignatureResultNative(byte[] signature);
    public static native int setMockCardTestModeNative(String mode);
    public static native String getMockCardTestResultNative();
    public static native String getRotaryCrownSelfTestNative();
}
