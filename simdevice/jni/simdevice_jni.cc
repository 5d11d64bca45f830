// Natives of com.tavrin.mmitest.sim.SimulatedDevice: one process-wide simulated device that Java
// code configures, programs and inspects.
#include <jni.h>
#include <simdevice/log_capture.h>
#include <simdevice/sim_device.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace {

using simdevice::Service;
using simdevice::SimDevice;

SimDevice& Device() {
    // Never destroyed: Java threads may still call in while the process exits.
    static SimDevice* device = new SimDevice();
    return *device;
}

struct TakenPositions {
    std::mutex lock;
    std::vector<jint> positions;
};

TakenPositions& taken_positions() {
    static TakenPositions* t = new TakenPositions();
    return *t;
}

void Throw(JNIEnv* env, const char* exception_class, const std::string& message) {
    jclass cls = env->FindClass(exception_class);
    if (cls != nullptr) env->ThrowNew(cls, message.c_str());
}

// Java strings are UTF-16; the device works in UTF-8. Going through the UTF-16 form rather than
// JNI's modified UTF-8 keeps characters outside the BMP and NUL in their standard encoding.
std::string FromJava(JNIEnv* env, jstring s) {
    jsize n = env->GetStringLength(s);
    std::vector<jchar> units(static_cast<size_t>(n));
    if (n > 0) env->GetStringRegion(s, 0, n, units.data());
    std::string out;
    for (size_t i = 0; i < units.size(); ++i) {
        uint32_t cp = units[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (units[i + 1] - 0xDC00u);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        if (cp < 0x80) {
            out += static_cast<char>(cp);
        } else if (cp < 0x800) {
            out += static_cast<char>(0xC0 | (cp >> 6));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            out += static_cast<char>(0xE0 | (cp >> 12));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (cp >> 18));
            out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    return out;
}

// Recorded texts hold whatever bytes the library sent; NewStringUTF would choke on bytes that are
// not modified UTF-8, so decode here and put U+FFFD for each byte that does not decode.
jstring ToJava(JNIEnv* env, const std::string& s) {
    std::vector<jchar> units;
    units.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        auto b = static_cast<unsigned char>(s[i]);
        size_t len = b < 0x80           ? 1
                     : (b >> 5) == 0x6  ? 2
                     : (b >> 4) == 0xE  ? 3
                     : (b >> 3) == 0x1E ? 4
                                        : 0;
        uint32_t cp = len == 1 ? b : len == 2 ? (b & 0x1F) : len == 3 ? (b & 0x0F) : (b & 0x07);
        bool ok = len != 0 && i + len <= s.size();
        for (size_t k = 1; ok && k < len; ++k) {
            auto c = static_cast<unsigned char>(s[i + k]);
            if ((c & 0xC0) != 0x80) ok = false;
            cp = (cp << 6) | (c & 0x3F);
        }
        static constexpr uint32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
        if (ok && (cp < kMin[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) ok = false;
        if (!ok) {
            units.push_back(0xFFFD);
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            units.push_back(static_cast<jchar>(0xD800 + ((cp - 0x10000) >> 10)));
            units.push_back(static_cast<jchar>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<jchar>(cp));
        }
        i += len;
    }
    return env->NewString(units.data(), static_cast<jsize>(units.size()));
}

jobjectArray ToJavaArray(JNIEnv* env, const std::vector<std::string>& lines) {
    jclass string_class = env->FindClass("java/lang/String");
    if (string_class == nullptr) return nullptr;
    jobjectArray array =
        env->NewObjectArray(static_cast<jsize>(lines.size()), string_class, nullptr);
    if (array == nullptr) return nullptr;
    for (size_t i = 0; i < lines.size(); ++i) {
        jstring s = ToJava(env, lines[i]);
        if (s == nullptr) return nullptr;  // OutOfMemoryError pending
        env->SetObjectArrayElement(array, static_cast<jsize>(i), s);
        env->DeleteLocalRef(s);
    }
    return array;
}

// The named service, or nothing with IllegalArgumentException pending.
std::optional<Service> ServiceArg(JNIEnv* env, jstring name) {
    if (name == nullptr) {
        Throw(env, "java/lang/IllegalArgumentException", "service name is null");
        return std::nullopt;
    }
    std::string text = FromJava(env, name);
    std::optional<Service> service = simdevice::ServiceFromName(text);
    if (!service) {
        std::string known;
        for (Service s : simdevice::kAllServices) {
            known += known.empty() ? "" : ", ";
            known += simdevice::ServiceName(s);
        }
        Throw(env, "java/lang/IllegalArgumentException",
              "unknown service \"" + text + "\"; known: " + known);
    }
    return service;
}

}  // namespace

extern "C" {

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_setAbsent(JNIEnv* env, jclass,
                                                                             jstring service,
                                                                             jboolean absent) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return;
    if (!Device().SetAbsent(*s, absent != JNI_FALSE)) {
        Throw(env, "java/lang/IllegalStateException", "setAbsent must come before start()");
    }
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_setStartDelay(JNIEnv* env,
                                                                                 jclass,
                                                                                 jstring service,
                                                                                 jlong ms) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return;
    if (ms < 0) {
        Throw(env, "java/lang/IllegalArgumentException",
              "start delay " + std::to_string(ms) + " ms is negative");
        return;
    }
    if (!Device().SetStartDelay(*s, ms)) {
        Throw(env, "java/lang/IllegalStateException", "setStartDelay must come before start()");
    }
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_setRestartDelay(JNIEnv*, jclass,
                                                                                   jlong ms) {
    Device().SetRestartDelay(ms < 0 ? -1 : ms);
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_waitRestarts(JNIEnv*, jclass) {
    Device().WaitRestarts();
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_setOnlyV10(JNIEnv* env, jclass,
                                                                              jstring service,
                                                                              jboolean only) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return;
    if (!Device().SetOnlyV10(*s, only != JNI_FALSE)) {
        Throw(env, "java/lang/IllegalArgumentException",
              std::string(simdevice::ServiceName(*s)) +
                  " has a single version; only factory, display and sensors have 1.1");
    }
}

JNIEXPORT jstring JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_program(JNIEnv* env, jclass,
                                                                              jstring service,
                                                                              jstring operation,
                                                                              jstring answer) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return nullptr;
    if (operation == nullptr || answer == nullptr) {
        return ToJava(env, "operation and answer must not be null");
    }
    std::string error;
    if (Device().Program(*s, FromJava(env, operation), FromJava(env, answer), &error)) {
        return nullptr;
    }
    return ToJava(env, error);
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_start(JNIEnv*, jclass) {
    Device().Start();
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_kill(JNIEnv* env, jclass,
                                                                        jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    if (s) Device().Kill(*s);
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_revive(JNIEnv* env, jclass,
                                                                          jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    if (s) Device().Revive(*s);
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_resetAnswers(JNIEnv*, jclass) {
    Device().ResetAnswers();
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_reset(JNIEnv*, jclass) {
    Device().Reset();
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_withdraw(JNIEnv* env, jclass,
                                                                            jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    if (s) Device().Withdraw(*s);
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_waitIdle(JNIEnv*, jclass) {
    SimDevice::WaitIdle();
}

JNIEXPORT jobjectArray JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_takeCalls(JNIEnv* env,
                                                                                     jclass) {
    // Taking the calls and keeping their positions is one step, so that takeCallPositions
    // matches the takeCalls that came just before it.
    TakenPositions& taken = taken_positions();
    std::lock_guard<std::mutex> lock(taken.lock);
    std::vector<simdevice::Call> calls = Device().TakeCalls();
    std::vector<std::string> texts;
    taken.positions.clear();
    for (const simdevice::Call& call : calls) {
        texts.push_back(call.Text());
        taken.positions.push_back(static_cast<jint>(call.position));
    }
    return ToJavaArray(env, texts);
}

JNIEXPORT jintArray JNICALL
Java_com_tavrin_mmitest_sim_SimulatedDevice_takeCallPositions(JNIEnv* env, jclass) {
    TakenPositions& taken = taken_positions();
    std::lock_guard<std::mutex> lock(taken.lock);
    jintArray array = env->NewIntArray(static_cast<jsize>(taken.positions.size()));
    if (array == nullptr) return nullptr;
    if (!taken.positions.empty()) {
        env->SetIntArrayRegion(array, 0, static_cast<jsize>(taken.positions.size()),
                               taken.positions.data());
    }
    return array;
}

JNIEXPORT void JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_captureLogs(JNIEnv*, jclass) {
    simdevice::CaptureLogs();
}

JNIEXPORT jobjectArray JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_takeLogs(JNIEnv* env,
                                                                                    jclass) {
    return ToJavaArray(env, simdevice::TakeLogs());
}

JNIEXPORT jobjectArray JNICALL
Java_com_tavrin_mmitest_sim_SimulatedDevice_operations(JNIEnv* env, jclass, jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return nullptr;
    std::vector<std::string> names;
    for (const simdevice::OperationInfo& info : SimDevice::Operations(*s)) {
        names.push_back(info.name);
    }
    return ToJavaArray(env, names);
}

JNIEXPORT jobjectArray JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_shapes(JNIEnv* env,
                                                                                  jclass,
                                                                                  jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return nullptr;
    std::vector<std::string> shapes;
    for (const simdevice::OperationInfo& info : SimDevice::Operations(*s)) {
        shapes.push_back(info.Shape());
    }
    return ToJavaArray(env, shapes);
}

}  // extern "C"
