// The loopback transport under the generated interface code: every operation sits at its
// interface position, parcels own what they carry, and a reference's death links go with it.
#include <android/hidl/base/1.0/IBase.h>
#include <gtest/gtest.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/HostTransport.h>
#include <simdevice/sim_device.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/hwtypes.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace simdevice {
namespace {

using ::android::OK;
using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::IBinder;
using ::android::hardware::IInterface;
using ::android::hardware::Parcel;
using ::android::hidl::base::V1_0::IBase;
namespace hw = ::vendor::tavrin::hardware;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdEvent;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation;

// The positions the services' interface definitions fix, kept here by hand on purpose: the
// .hal files must agree with them.
const std::map<std::string, uint32_t> kPositions = {
    {"factory.isFactoryVersion", 1},
    {"factory.getManufactureFileName", 2},
    {"factory.setMmiTestResult", 3},
    {"factory.getFactoryInfo", 4},
    {"factory.setFactoryInfo", 5},
    {"factory.getManufactureStationFlag", 6},
    {"factory.getMmiDeviceFeaturesCheckResult", 20},
    {"factory.executeHighTemperInterceptCmd", 27},
    {"factory.sendBigDataOperation", 47},
    {"factory.sendBigDataValue", 48},
    {"factory.releaseFactoryHidlResource", 50},
    {"factory.readOeminfo", 53},
    {"factory.writeOeminfo", 57},
    {"factory.getManufactureMode", 64},
    {"display.setDisplayFps", 23},
    {"display.getDisplayFpsConfig", 24},
    {"touchscreen.getRotateCrownTestResult", 6},
    {"touchscreen.getCapacitanceTestResult", 11},
    {"touchscreen.getCapacitanceCalibrateResult", 13},
    {"touchscreen.getTpPressureWaitingTime", 16},
    {"touchscreen.isTpPressureSupported", 17},
    {"touchscreen.getTpPressureStatus", 20},
    {"touchscreen.getTpPressureVerifyResult", 25},
    {"touchscreen.controlTpPressureCalibMode0", 26},
    {"touchscreen.controlTpPressureCalibMode1", 27},
    {"touchscreen.setTpPressureCalibration0", 28},
    {"touchscreen.setTpPressureCalibration1", 29},
    {"touchscreen.setTpPressureVerification0", 30},
    {"touchscreen.setTpPressureVerification1", 31},
    {"touchscreen.checkTpPressureCalibPosition", 33},
    {"touchscreen.setTouchScreenFeatureConfig", 39},
    {"sensors.getSensorCalibrateDelayTime", 11},
    {"sensors.getSensorSelfTestDelayTime", 12},
    {"sensors.startSensorCalibrate", 13},
    {"sensors.getSensorCalibrateResult", 14},
    {"sensors.startSensorSelfTest", 15},
    {"sensors.getSensorSelfTestResult", 16},
    {"sensors.getSensorCalibrateType", 17},
    {"sensors.getCompassRawValueLimit", 20},
    {"sensors.setApPressureCalibrationExtern", 21},
    {"sensors.getFlickerRawData", 24},
    {"sensors.setPsExternalIrMode", 25},
    {"sensors.sensorActivate", 28},
    {"sensors.handleSensorParameter", 29},
    {"power.getPowerState", 5},
    {"power.setPowerState", 6},
    {"power.checkUsbSpeed", 9},
    {"light.setLightBrightness", 5},
    {"otherdevices.getTouchkeyCapacitanceTestResult", 1},
    {"otherdevices.getTouchKeySupportState", 2},
};

// A version of the service's interface by the descriptor its definitions give it; the device's
// description must name the interfaces the generated code declares.
std::string Descriptor(Service service, const char* version) {
    return std::string(Info(service).package) + "@" + version + "::" + Info(service).interface;
}

template <typename T>
void WriteRecord(Parcel* data, const T& value) {
    size_t handle = 0;
    ASSERT_EQ(data->writeBuffer(&value, sizeof(value), &handle), OK);
    if constexpr (std::is_same_v<T, hidl_string>) {
        ASSERT_EQ(::android::hardware::writeEmbeddedToParcel(value, data, handle, 0), OK);
    } else if constexpr (std::is_same_v<T, hidl_vec<int32_t>>) {
        size_t child = 0;
        ASSERT_EQ(::android::hardware::writeEmbeddedToParcel(value, data, handle, 0, &child), OK);
    } else {
        ASSERT_EQ(writeEmbeddedToParcel(value, data, handle, 0), OK);
    }
}

// A request for the operation: the declaring interface's token and a zero of every argument.
void WriteRequest(const OperationInfo& op, const char* token, Parcel* data) {
    data->writeInterfaceToken(token);
    for (const Field& arg : op.args) {
        switch (arg.type) {
            case Type::kInt32:
            case Type::kDisplayRet:
                data->writeInt32(0);
                break;
            case Type::kInt64:
                data->writeInt64(0);
                break;
            case Type::kBool:
                data->writeBool(false);
                break;
            case Type::kString:
                WriteRecord(data, hidl_string());
                break;
            case Type::kInt32Vector:
                WriteRecord(data, hidl_vec<int32_t>());
                break;
            case Type::kFmdMsg:
                WriteRecord(data, FmdMsg{});
                break;
            case Type::kFmdOperation:
                WriteRecord(data, FmdOperation{});
                break;
        }
    }
}

// Sends each transaction code the definitions list to the service, as a client's reference does,
// and checks that it reaches the operation of that name, which records the code it came with.
TEST(Transport, EveryListedOperationAnswersAtItsPosition) {
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    device.Start();
    size_t checked = 0;
    for (Service service : kAllServices) {
        sp<IBinder> binder = ::android::hardware::details::getServiceBinder(
            Descriptor(service, Info(service).versions.back()), InstanceName(service));
        ASSERT_NE(binder, nullptr) << ServiceName(service);
        for (const OperationInfo& op : SimDevice::Operations(service)) {
            const std::string key = std::string(ServiceName(service)) + "." + op.name;
            SCOPED_TRACE(key);
            ASSERT_EQ(kPositions.count(key), 1u);
            const uint32_t position = kPositions.at(key);
            Parcel data;
            Parcel reply;
            WriteRequest(op, Descriptor(service, op.version).c_str(), &data);
            EXPECT_EQ(binder->transact(position, data, &reply), OK);
            std::vector<Call> calls = device.TakeCalls();
            ASSERT_EQ(calls.size(), 1u);
            EXPECT_EQ(calls[0].operation, op.name);
            EXPECT_EQ(calls[0].position, position);
            ++checked;
        }
    }
    EXPECT_EQ(checked, kPositions.size());
}

template <typename T>
const T* ReadRecord(const Parcel& parcel) {
    const void* out = nullptr;
    size_t handle = 0;
    EXPECT_EQ(parcel.readBuffer(sizeof(T), &handle, &out), OK);
    const T* value = static_cast<const T*>(out);
    if constexpr (std::is_same_v<T, hidl_vec<int32_t>>) {
        size_t child = 0;
        EXPECT_EQ(::android::hardware::readEmbeddedFromParcel(*value, parcel, handle, 0, &child),
                  OK);
    } else if constexpr (std::is_same_v<T, hidl_string>) {
        EXPECT_EQ(::android::hardware::readEmbeddedFromParcel(*value, parcel, handle, 0), OK);
    } else {
        EXPECT_EQ(readEmbeddedFromParcel(*value, parcel, handle, 0), OK);
    }
    return value;
}

// What a reader gets must not depend on the writer's memory once it is written: the proxy reads
// its reply after the service's values are gone. Each case overwrites its source in place after
// writing it.
TEST(Transport, ParcelKeepsItsOwnCopiesOfNestedBuffers) {
    Parcel parcel;
    hidl_string text("fleeting");
    hidl_vec<int32_t> vec{7, -1, 42};
    FmdMsg msg;
    msg.version = 3;
    msg.events.resize(2);
    msg.events[0].station = "station A";
    msg.events[1].description = std::string(300, 'd');
    WriteRecord(&parcel, text);
    WriteRecord(&parcel, vec);
    WriteRecord(&parcel, msg);
    std::memset(const_cast<char*>(text.c_str()), 'x', text.size());
    vec[0] = 0;
    msg.version = 0;
    std::memset(const_cast<char*>(msg.events[0].station.c_str()), 'x', 9);
    msg.events[1].description = "";

    EXPECT_EQ(std::string(*ReadRecord<hidl_string>(parcel)), "fleeting");
    EXPECT_EQ(std::vector<int32_t>(*ReadRecord<hidl_vec<int32_t>>(parcel)),
              (std::vector<int32_t>{7, -1, 42}));
    const FmdMsg* read = ReadRecord<FmdMsg>(parcel);
    EXPECT_EQ(read->version, 3);
    EXPECT_EQ(std::string(read->events[0].station), "station A");
    EXPECT_EQ(read->events[1].description.size(), 300u);

    Parcel token;
    token.writeInterfaceToken(hw::power::V1_0::IKXPower::descriptor);
    EXPECT_FALSE(token.enforceInterface(hw::light::V2_0::ILight::descriptor));
}

class CountingRecipient : public ::android::hardware::hidl_death_recipient {
  public:
    void serviceDied(uint64_t cookie, const ::android::wp<IBase>&) override {
        std::lock_guard<std::mutex> lock(mLock);
        mCookies.push_back(cookie);
    }
    std::vector<uint64_t> cookies() {
        std::lock_guard<std::mutex> lock(mLock);
        return mCookies;
    }

  private:
    std::mutex mLock;
    std::vector<uint64_t> mCookies;
};

// Many connect passes, each linking a new handle and dropping the last: one death is reported
// once for each handle still held, and dropped handles leave no link behind.
TEST(Transport, DroppedReferencesTakeTheirDeathLinksWithThem) {
    using Power = hw::power::V1_0::IKXPower;
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    device.Start();
    sp<CountingRecipient> recipient = new CountingRecipient();
    std::vector<sp<Power>> kept;
    sp<Power> current;
    constexpr uint64_t kPasses = 1000;
    for (uint64_t pass = 0; pass < kPasses; ++pass) {
        current = Power::getService("default");  // the previous handle goes
        ASSERT_TRUE(current->linkToDeath(recipient, pass).withDefault(false));
        if (pass % 100 == 0) kept.push_back(current);
    }
    EXPECT_EQ(::android::hardware::details::deathLinkCount(Power::descriptor, "default"),
              kept.size() + 1);
    ASSERT_TRUE(device.Kill(Service::kPower));
    ASSERT_TRUE(SimDevice::WaitIdle(std::chrono::seconds(10))) << "transport reports undelivered";
    std::vector<uint64_t> expected;
    for (uint64_t pass = 0; pass < kPasses; pass += 100) expected.push_back(pass);
    expected.push_back(kPasses - 1);
    std::vector<uint64_t> reported = recipient->cookies();
    std::sort(reported.begin(), reported.end());
    EXPECT_EQ(reported, expected);
}

// The stand-in types are no kinder than a device's: new vector integers hold nothing to rely on,
// and a text handed over as external must end with its zero byte.
TEST(Types, NewVectorIntegersArePoisonedAndExternalTextsNeedTheirZeroByte) {
    constexpr uint32_t kPoison = 0xA5A5A5A5u;
    hidl_vec<int32_t> v(3);
    for (int32_t x : v) EXPECT_EQ(static_cast<uint32_t>(x), kPoison);
    v[0] = 7;
    v.resize(5);
    EXPECT_EQ(v[0], 7);
    EXPECT_EQ(static_cast<uint32_t>(v[4]), kPoison);

    const std::string text = "abc";
    hidl_string external;
    external.setToExternal(text.data(), text.size());
    EXPECT_EQ(std::string(external), "abc");
    // Forked, not re-executed: under qemu the binary cannot exec itself.
    GTEST_FLAG_SET(death_test_style, "fast");
    EXPECT_DEATH(external.setToExternal(text.data(), 2), "without a zero byte");
}

TEST(Types, StatusDescribesItselfAsTheDeviceRuntimeDoes) {
    using ::android::hardware::Status;
    const std::pair<Status, std::string> cases[] = {
        {Status::ok(), "No error"},
        {Status::fromStatusT(::android::DEAD_OBJECT),
         "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '"},
        {Status::fromStatusT(::android::UNKNOWN_ERROR),
         "Status(EX_TRANSACTION_FAILED): 'UNKNOWN_ERROR: '"},
        {Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED, "why"),
         "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: why'"},
        {Status::fromStatusT(-1234), "Status(EX_TRANSACTION_FAILED): '-1234: '"},
        {Status::fromExceptionCode(Status::EX_SECURITY, "denied"), "Status(EX_SECURITY): 'denied'"},
        {Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT), "Status(EX_ILLEGAL_ARGUMENT): ''"},
        {Status::fromExceptionCode(Status::EX_HAS_REPLY_HEADER, "h"),
         "Status(EX_HAS_REPLY_HEADER): 'h'"},
        {Status::fromExceptionCode(-42, "odd"), "Status(-42): 'odd'"},
    };
    for (const auto& [status, text] : cases) EXPECT_EQ(status.description(), text);
}

}  // namespace
}  // namespace simdevice
