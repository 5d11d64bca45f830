// Test-record types of vendor.tavrin.hardware.kxfactoryinterface@1.0. Field order and layout are
// the service's; the asserts keep them from drifting.
#ifndef VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_0_TYPES_H
#define VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_0_TYPES_H

#include <hidl/HidlSupport.h>

#include <cstddef>
#include <cstdint>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxfactoryinterface {
namespace V1_0 {

struct FmdEvent final {
    int32_t errorCode __attribute__((aligned(4)));
    int32_t itemId __attribute__((aligned(4)));
    int32_t cycle __attribute__((aligned(4)));
    ::android::hardware::hidl_string result __attribute__((aligned(8)));
    ::android::hardware::hidl_string station __attribute__((aligned(8)));
    ::android::hardware::hidl_string bsn __attribute__((aligned(8)));
    ::android::hardware::hidl_string time __attribute__((aligned(8)));
    ::android::hardware::hidl_string deviceName __attribute__((aligned(8)));
    ::android::hardware::hidl_string testName __attribute__((aligned(8)));
    ::android::hardware::hidl_string value __attribute__((aligned(8)));
    ::android::hardware::hidl_string thresholdMin __attribute__((aligned(8)));
    ::android::hardware::hidl_string thresholdMax __attribute__((aligned(8)));
    ::android::hardware::hidl_string firmware __attribute__((aligned(8)));
    ::android::hardware::hidl_string description __attribute__((aligned(8)));
};

struct FmdMsg final {
    int32_t version __attribute__((aligned(4)));
    int32_t dataSource __attribute__((aligned(4)));
    int32_t eventCount __attribute__((aligned(4)));
    ::android::hardware::hidl_vec<FmdEvent> events __attribute__((aligned(8)));
};

struct FmdOperation final {
    int32_t version __attribute__((aligned(4)));
    int32_t commandId __attribute__((aligned(4)));
    int32_t operation __attribute__((aligned(4)));
    int32_t cycle __attribute__((aligned(4)));
    ::android::hardware::hidl_string station __attribute__((aligned(8)));
    ::android::hardware::hidl_string bsn __attribute__((aligned(8)));
};

static_assert(offsetof(FmdEvent, errorCode) == 0, "wrong offset");
static_assert(offsetof(FmdEvent, itemId) == 4, "wrong offset");
static_assert(offsetof(FmdEvent, cycle) == 8, "wrong offset");
static_assert(offsetof(FmdEvent, result) == 16, "wrong offset");
static_assert(offsetof(FmdEvent, station) == 32, "wrong offset");
static_assert(offsetof(FmdEvent, bsn) == 48, "wrong offset");
static_assert(offsetof(FmdEvent, time) == 64, "wrong offset");
static_assert(offsetof(FmdEvent, deviceName) == 80, "wrong offset");
static_assert(offsetof(FmdEvent, testName) == 96, "wrong offset");
static_assert(offsetof(FmdEvent, value) == 112, "wrong offset");
static_assert(offsetof(FmdEvent, thresholdMin) == 128, "wrong offset");
static_assert(offsetof(FmdEvent, thresholdMax) == 144, "wrong offset");
static_assert(offsetof(FmdEvent, firmware) == 160, "wrong offset");
static_assert(offsetof(FmdEvent, description) == 176, "wrong offset");
static_assert(sizeof(FmdEvent) == 192, "wrong size");
static_assert(alignof(FmdEvent) == 8, "wrong alignment");

static_assert(offsetof(FmdMsg, version) == 0, "wrong offset");
static_assert(offsetof(FmdMsg, dataSource) == 4, "wrong offset");
static_assert(offsetof(FmdMsg, eventCount) == 8, "wrong offset");
static_assert(offsetof(FmdMsg, events) == 16, "wrong offset");
static_assert(sizeof(FmdMsg) == 32, "wrong size");

static_assert(offsetof(FmdOperation, version) == 0, "wrong offset");
static_assert(offsetof(FmdOperation, commandId) == 4, "wrong offset");
static_assert(offsetof(FmdOperation, operation) == 8, "wrong offset");
static_assert(offsetof(FmdOperation, cycle) == 12, "wrong offset");
static_assert(offsetof(FmdOperation, station) == 16, "wrong offset");
static_assert(offsetof(FmdOperation, bsn) == 32, "wrong offset");
static_assert(sizeof(FmdOperation) == 48, "wrong size");

}  // namespace V1_0
}  // namespace kxfactoryinterface
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
