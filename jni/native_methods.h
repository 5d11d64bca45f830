// The native functions behind MmiNativeManager's 52 methods, grouped by family. They are global
// symbols under their own names; the registration table binds them to the Java names.
#ifndef KXMMI_JNI_NATIVE_METHODS_H
#define KXMMI_JNI_NATIVE_METHODS_H

#include <jni.h>

// Touch-panel pressure calibration.
jint SetApPressureCalibrationExtern(JNIEnv* env, jobject object, jint sensorId, jint testCtrl,
                                    jintArray rawData);
jboolean IsTpPressureSupported(JNIEnv* env, jobject object);
jint GetTpPressureStatus(JNIEnv* env, jobject object);
jint GetTpPressureVerifyResult(JNIEnv* env, jobject object, jint value);
jboolean ControlTpPressureCalibMode(JNIEnv* env, jobject object, jint type);
jboolean SetTpPressureCalibration(JNIEnv* env, jobject object, jint type, jint index);
jboolean SetTpPressureVerification(JNIEnv* env, jobject object, jint type, jint index);
jlong GetTpPressureWaitingTime(JNIEnv* env, jobject object);
jint CheckTpPressureCalibPosition(JNIEnv* env, jobject object, jint x, jint y, jint z);

// Capacitance tests, touch keys, touch feature configuration and rotary crown.
jint GetCapacitanceTestResult(JNIEnv* env, jobject object);
jint GetTouchkeyCapacitanceTestResult(JNIEnv* env, jobject object);
jint GetTouchKeySupportState(JNIEnv* env, jobject object);
jstring GetCapacitanceCalibrateResult(JNIEnv* env, jobject object, jint value);
jint SetTouchScreenFeatureConfig(JNIEnv* env, jobject object, jint feature, jstring config);
jstring GetRotateCrownTestResult(JNIEnv* env, jobject object);

// Manufacturing information and station state.
jboolean IsFactoryVersion(JNIEnv* env, jobject object);
jstring GetManufactureFileName(JNIEnv* env, jobject object);
jint ReleaseFactoryHidlResource(JNIEnv* env, jobject object);
jint SetMmiTestResult(JNIEnv* env, jobject object, jint first, jint second);
jstring GetBsn(JNIEnv* env, jobject object);
jstring GetMmiAutoStartFlag(JNIEnv* env, jobject object);
jint SetMMIAutoStartFlag(JNIEnv* env, jobject object, jstring flag);
jstring GetManufactureStationFlag(JNIEnv* env, jobject object, jint stationId);
jint SetTestCycle(JNIEnv* env, jobject object, jint stationId, jint cycle);
jint GetManufactureMode(JNIEnv* env, jobject object);
jint GetMmiDeviceFeaturesCheckResult(JNIEnv* env, jobject object, jint feature);
jstring GetOeminfo(JNIEnv* env, jobject object, jint a, jint b, jint c);

// Test records.
jint SendBigDataOperation(JNIEnv* env, jobject object, jobject operation);
jint SendBigDataValue(JNIEnv* env, jobject object, jobject value);

// Signature verification, memory-card test and high-temperature command.
jint GetVerifySignatureResult(JNIEnv* env, jobject object, jbyteArray data);
jint SetZqCardTestMode(JNIEnv* env, jobject object, jstring mode);
jstring GetZqCardTestResult(JNIEnv* env, jobject object);
jint ExecuteHighTemperInterceptCmd(JNIEnv* env, jobject object, jstring testScene,
                                   jstring parameters);

// Sensor calibration and self-test.
jint GetSensorCalibrateDelayTime(JNIEnv* env, jobject object, jint sensorId);
jint GetSensorSelfTestDelayTime(JNIEnv* env, jobject object, jint sensorId);
jint StartSensorCalibrate(JNIEnv* env, jobject object, jint sensorId, jint command);
jint StartSensorSelfTest(JNIEnv* env, jobject object, jint sensorId, jint command);
jint GetSensorCalibrateResult(JNIEnv* env, jobject object, jint sensorId);
jint GetSensorSelfTestResult(JNIEnv* env, jobject object, jint sensorId);
jstring GetSensorCalibrateType(JNIEnv* env, jobject object, jint sensorId);
jint GetCompassRawValueLimit(JNIEnv* env, jobject object);
jint SetPsExternalIrMode(JNIEnv* env, jobject object, jint mode);
jboolean SensorActivate(JNIEnv* env, jobject object, jint sensorType, jboolean enable,
                        jint samplingRate);

// Sensor parameter commands.
jstring HandleSensorParameter(JNIEnv* env, jobject object, jint sensorId, jint mainCmd, jint subCmd,
                              jint length);
jintArray HandleAmbientLightParameter(JNIEnv* env, jobject object, jint sensorId, jint mainCmd,
                                      jint subCmd, jint length);

// Flicker measurement.
jint GetFlickerFrequency(JNIEnv* env, jobject object, jint value);

// Power state and USB speed.
jstring GetPowerState(JNIEnv* env, jobject object, jstring query);
jint SetPowerState(JNIEnv* env, jobject object, jstring testScene, jstring para);
jint CheckUsbSpeed(JNIEnv* env, jobject object, jstring scene);

// Display refresh rate and light brightness.
jstring GetScreenFpsConfig(JNIEnv* env, jobject object);
jboolean SetScreenFps(JNIEnv* env, jobject object, jint freqIndex);
jint SetLightBrightness(JNIEnv* env, jobject object, jint id, jint brightness);

#endif
