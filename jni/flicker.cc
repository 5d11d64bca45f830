// Flicker measurement from the light sensor's raw samples.
#include <flicker_detector.h>

#include <algorithm>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeValues;
using kxmmi::ISensors;
using kxmmi::Service;

namespace {

// One detection takes this many samples, taken 1000 times a second.
constexpr int32_t kBlockSamples = 256;
constexpr float kSampleRate = 1000.0f;

}  // namespace

jint GetFlickerFrequency(JNIEnv* /*env*/, jobject /*object*/, jint value) {
    sp<ISensors> sensors = Acquire<Service::Sensors>("GetFlickerFrequency");
    if (sensors == nullptr) return -1;

    CodeValues raw;
    if (!kxmmi::TransportOk(sensors->getFlickerRawData(value, raw.Receiver()),
                            "GetFlickerFrequency")) {
        return -1;
    }
    if (raw.code != 0) {
        KXLOGE("%s: GetFlickerFrequency fail, result fail");
        return -1;
    }
    if (raw.values.size() < static_cast<size_t>(kBlockSamples)) {
        KXLOGE("%s: GetFlickerFrequency fail, original data is illegal");
        return -1;
    }

    int32_t block[kBlockSamples];
    std::copy_n(raw.values.begin(), kBlockSamples, block);
    // A detector that cannot clear its state leaves the -1, which is then logged and returned.
    int32_t frequenceDetected = -1;
    DetectFlickerFrequence(block, kBlockSamples, frequenceDetected, kSampleRate);
    KXLOGD("%s: GetFlickerFrequency, frequenceDetected: %d", frequenceDetected);
    return frequenceDetected;
}
