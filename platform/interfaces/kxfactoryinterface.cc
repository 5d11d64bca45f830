// Host client proxies and service-manager glue of vendor.tavrin.hardware.kxfactoryinterface.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/IKxFactoryInterface.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.1/IKxFactoryInterface.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class KxFactoryInterfaceProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<bool> isFactoryVersion() override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, bool>(
            1, "isFactoryVersion",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.isFactoryVersion();
            });
    }
    Return<void> getManufactureFileName(
        typename ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface::
            getManufactureFileName_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, void>(
            2, "getManufactureFileName",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.getManufactureFileName(_hidl_cb);
            });
    }
    Return<int32_t> setMmiTestResult(int32_t first, int32_t second) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            3, "setMmiTestResult",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.setMmiTestResult(first, second);
            });
    }
    Return<void> getFactoryInfo(int32_t infoKind,
                                typename ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::
                                    IKxFactoryInterface::getFactoryInfo_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, void>(
            4, "getFactoryInfo",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.getFactoryInfo(infoKind, _hidl_cb);
            });
    }
    Return<int32_t> setFactoryInfo(int32_t infoKind,
                                   const ::android::hardware::hidl_string& value) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            5, "setFactoryInfo",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.setFactoryInfo(infoKind, value);
            });
    }
    Return<void> getManufactureStationFlag(
        int32_t stationId,
        typename ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface::
            getManufactureStationFlag_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, void>(
            6, "getManufactureStationFlag",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.getManufactureStationFlag(stationId, _hidl_cb);
            });
    }
    Return<int32_t> getMmiDeviceFeaturesCheckResult(int32_t feature) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            20, "getMmiDeviceFeaturesCheckResult",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.getMmiDeviceFeaturesCheckResult(feature);
            });
    }
    Return<void> executeHighTemperInterceptCmd(
        const ::android::hardware::hidl_string& testScene,
        const ::android::hardware::hidl_string& parameters,
        typename ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface::
            executeHighTemperInterceptCmd_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, void>(
            27, "executeHighTemperInterceptCmd",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.executeHighTemperInterceptCmd(testScene, parameters, _hidl_cb);
            });
    }
    Return<int32_t> sendBigDataOperation(
        const ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation& operation)
        override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            47, "sendBigDataOperation",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.sendBigDataOperation(operation);
            });
    }
    Return<int32_t> sendBigDataValue(
        const ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg& msg) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            48, "sendBigDataValue",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.sendBigDataValue(msg);
            });
    }
    Return<int32_t> releaseFactoryHidlResource() override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface, int32_t>(
            50, "releaseFactoryHidlResource",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface& s) {
                return s.releaseFactoryHidlResource();
            });
    }
};

template <typename I>
class KxFactoryInterfaceProxyV1_1 : public KxFactoryInterfaceProxyV1_0<I> {
  public:
    using KxFactoryInterfaceProxyV1_0<I>::KxFactoryInterfaceProxyV1_0;
    Return<void> readOeminfo(int32_t a, int32_t b, int32_t c,
                             typename ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::
                                 IKxFactoryInterface::readOeminfo_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface, void>(
            53, "readOeminfo",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface& s) {
                return s.readOeminfo(a, b, c, _hidl_cb);
            });
    }
    Return<int32_t> writeOeminfo(int32_t itemId, int32_t size,
                                 const ::android::hardware::hidl_string& data) override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface, int32_t>(
            57, "writeOeminfo",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface& s) {
                return s.writeOeminfo(itemId, size, data);
            });
    }
    Return<int32_t> getManufactureMode() override {
        return this->template transact<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface, int32_t>(
            64, "getManufactureMode",
            [&](::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface& s) {
                return s.getManufactureMode();
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxfactoryinterface {
namespace V1_0 {

const char* IKxFactoryInterface::descriptor =
    "vendor.tavrin.hardware.kxfactoryinterface@1.0::IKxFactoryInterface";

HOST_INTERFACE_GLUE(
    IKxFactoryInterface, KxFactoryInterfaceProxyV1_0<IKxFactoryInterface>,
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface,
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface::descriptor)

}  // namespace V1_0
}  // namespace kxfactoryinterface
namespace kxfactoryinterface {
namespace V1_1 {

const char* IKxFactoryInterface::descriptor =
    "vendor.tavrin.hardware.kxfactoryinterface@1.1::IKxFactoryInterface";

HOST_INTERFACE_GLUE(
    IKxFactoryInterface, KxFactoryInterfaceProxyV1_1<IKxFactoryInterface>,
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface,
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface::descriptor,
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface::descriptor)

}  // namespace V1_1
}  // namespace kxfactoryinterface
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
