// Conversion of the app's test-record objects into the factory service's record types.
#ifndef KXMMI_JNI_FACTORY_RECORDS_H
#define KXMMI_JNI_FACTORY_RECORDS_H

#include <jni.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <cstdint>
#include <string>

// The object's int field fieldName of class className, or -1 after one error line.
int32_t GetIntFromObject(JNIEnv* env, jobject object, const char* className, const char* fieldName);

// The characters of the object's String field, or the empty text after one error line.
std::string GetStringFromObject(JNIEnv* env, jobject object, const char* className,
                                const char* fieldName);

// Fills msg with version, dataSource and a single event that is msg's own deep copy of event.
void InitFmdMessage(::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg& msg,
                    int32_t version, int32_t dataSource,
                    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdEvent event);

#endif
