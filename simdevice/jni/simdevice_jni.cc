// Natives of com.tavrin.mmitest.sim.SimulatedDevice: one process-wide simulated device that Java
// code configures, programs and inspects.
#include <jni.h>
#include <simdevice/log_capture.h>
#include <simdevice/sim_device.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
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
        simdevice::AppendUtf8(cp, &out);
    }
    return out;
}

// UTF-8 into UTF-16; with modified, also the JNI's modified UTF-8 (NUL as C0 80, a character
// beyond the BMP as its two surrogates encoded one by one), which is what the library passes on
// from Java. Each byte that does not decode becomes U+FFFD; returns whether none did.
bool Decode(const std::string& s, bool modified, std::vector<jchar>* units) {
    bool clean = true;
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
        bool modified_nul = modified && ok && len == 2 && cp == 0;
        if (ok && !modified_nul && (cp < kMin[len] || cp > 0x10FFFF)) ok = false;
        if (ok && cp >= 0xD800 && cp <= 0xDFFF) {
            // Only a high surrogate followed by an encoded low one, and only in modified UTF-8.
            ok = false;
            if (modified && cp <= 0xDBFF && i + 6 <= s.size() &&
                static_cast<unsigned char>(s[i + 3]) == 0xED) {
                auto b1 = static_cast<unsigned char>(s[i + 4]);
                auto b2 = static_cast<unsigned char>(s[i + 5]);
                if ((b1 & 0xF0) == 0xB0 && (b2 & 0xC0) == 0x80) {
                    units->push_back(static_cast<jchar>(cp));
                    units->push_back(static_cast<jchar>(0xDC00 | ((b1 & 0x0F) << 6) | (b2 & 0x3F)));
                    i += 6;
                    continue;
                }
            }
        }
        if (!ok) {
            clean = false;
            units->push_back(0xFFFD);
            ++i;
            continue;
        }
        if (cp >= 0x10000) {
            units->push_back(static_cast<jchar>(0xD800 + ((cp - 0x10000) >> 10)));
            units->push_back(static_cast<jchar>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
        } else {
            units->push_back(static_cast<jchar>(cp));
        }
        i += len;
    }
    return clean;
}

// Recorded texts hold whatever bytes the library sent; NewStringUTF would choke on bytes that are
// not modified UTF-8, so decode here.
jstring ToJava(JNIEnv* env, const std::string& s, bool modified = false) {
    std::vector<jchar> units;
    units.reserve(s.size());
    Decode(s, modified, &units);
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

// Builds the Java values of records: boxed numbers, unmodifiable lists and maps, records by
// their canonical constructors. Every method returns null with an exception pending on failure.
class Builder {
  public:
    explicit Builder(JNIEnv* env) : env_(env) {}

    bool Init() {
        return Class("java/lang/Integer", &integer_) &&
               Static(integer_, "valueOf", "(I)Ljava/lang/Integer;", &integer_of_) &&
               Class("java/lang/Long", &long_) &&
               Static(long_, "valueOf", "(J)Ljava/lang/Long;", &long_of_) &&
               Class("java/lang/Boolean", &boolean_) &&
               Static(boolean_, "valueOf", "(Z)Ljava/lang/Boolean;", &boolean_of_) &&
               Class("java/util/ArrayList", &list_) && Method(list_, "<init>", "()V", &list_new_) &&
               Method(list_, "add", "(Ljava/lang/Object;)Z", &list_add_) &&
               Class("java/util/LinkedHashMap", &map_) &&
               Method(map_, "<init>", "()V", &map_new_) &&
               Method(map_, "put", "(Ljava/lang/Object;Ljava/lang/Object;)Ljava/lang/Object;",
                      &map_put_) &&
               Class("java/util/Collections", &collections_) &&
               Static(collections_, "unmodifiableList", "(Ljava/util/List;)Ljava/util/List;",
                      &frozen_list_) &&
               Static(collections_, "unmodifiableMap", "(Ljava/util/Map;)Ljava/util/Map;",
                      &frozen_map_);
    }

    JNIEnv* env() const { return env_; }

    jobject Int(int32_t v) { return env_->CallStaticObjectMethod(integer_, integer_of_, v); }
    jobject Long(int64_t v) {
        return env_->CallStaticObjectMethod(long_, long_of_, static_cast<jlong>(v));
    }
    jobject Bool(bool v) {
        return env_->CallStaticObjectMethod(boolean_, boolean_of_, v ? JNI_TRUE : JNI_FALSE);
    }
    jstring Text(const char* s) { return ToJava(env_, s, true); }
    // A String where the bytes decode, else the bytes themselves.
    jobject TextOrBytes(const std::string& s) {
        std::vector<jchar> units;
        if (Decode(s, true, &units)) {
            return env_->NewString(units.data(), static_cast<jsize>(units.size()));
        }
        jbyteArray bytes = env_->NewByteArray(static_cast<jsize>(s.size()));
        if (bytes != nullptr && !s.empty()) {
            env_->SetByteArrayRegion(bytes, 0, static_cast<jsize>(s.size()),
                                     reinterpret_cast<const jbyte*>(s.data()));
        }
        return bytes;
    }

    // items(i) makes the i-th element as a new local reference, or null on failure.
    template <typename F>
    jobject List(size_t n, F items) {
        jobject list = env_->NewObject(list_, list_new_);
        if (list == nullptr) return nullptr;
        for (size_t i = 0; i < n; ++i) {
            jobject item = Made(items, i);
            if (item == nullptr) return nullptr;
            env_->CallBooleanMethod(list, list_add_, item);
            env_->DeleteLocalRef(item);
            if (env_->ExceptionCheck()) return nullptr;
        }
        return Frozen(list, frozen_list_);
    }

    jobject Map(const std::vector<std::pair<jobject, jobject>>& entries) {
        jobject map = env_->NewObject(map_, map_new_);
        for (const auto& [key, value] : entries) {
            if (map == nullptr || key == nullptr || value == nullptr) return nullptr;
            jobject old = env_->CallObjectMethod(map, map_put_, key, value);
            if (env_->ExceptionCheck()) return nullptr;
            if (old != nullptr) env_->DeleteLocalRef(old);
            env_->DeleteLocalRef(key);
            env_->DeleteLocalRef(value);
        }
        return map == nullptr ? nullptr : Frozen(map, frozen_map_);
    }

    jobject Arg(const simdevice::ArgValue& arg) {
        struct Visitor {
            Builder& b;
            jobject operator()(int32_t v) const { return b.Int(v); }
            jobject operator()(int64_t v) const { return b.Long(v); }
            jobject operator()(bool v) const { return b.Bool(v); }
            jobject operator()(const std::string& v) const { return b.TextOrBytes(v); }
            jobject operator()(const std::vector<int32_t>& v) const {
                return b.List(v.size(), [&](size_t i) { return b.Int(v[i]); });
            }
            jobject operator()(const simdevice::ArgRecord& r) const {
                std::vector<std::pair<jobject, jobject>> entries;
                for (const auto& [name, value] : r) {
                    entries.emplace_back(b.Text(name.c_str()), b.Arg(value));
                }
                return b.Map(entries);
            }
            jobject operator()(const std::vector<simdevice::ArgValue>& list) const {
                return b.List(list.size(), [&](size_t i) { return b.Arg(list[i]); });
            }
        };
        return std::visit(Visitor{*this}, arg.value);
    }

    // An array of class_name's objects, the i-th made by items(i).
    template <typename F>
    jobjectArray Array(const char* class_name, size_t n, F items) {
        jclass cls = env_->FindClass(class_name);
        if (cls == nullptr) return nullptr;
        jobjectArray array = env_->NewObjectArray(static_cast<jsize>(n), cls, nullptr);
        for (size_t i = 0; array != nullptr && i < n; ++i) {
            jobject item = Made(items, i);
            if (item == nullptr) return nullptr;
            env_->SetObjectArrayElement(array, static_cast<jsize>(i), item);
            env_->DeleteLocalRef(item);
        }
        return array;
    }

    // A new object of class_name by the constructor of that signature.
    template <typename... Args>
    jobject New(const char* class_name, const char* signature, Args... args) {
        jclass cls = env_->FindClass(class_name);
        if (cls == nullptr) return nullptr;
        jmethodID init = env_->GetMethodID(cls, "<init>", signature);
        if (init == nullptr) return nullptr;
        jobject object = env_->NewObject(cls, init, args...);
        env_->DeleteLocalRef(cls);
        return object;
    }

  private:
    // items(i), with the local references it makes on the way released.
    template <typename F>
    jobject Made(F& items, size_t i) {
        if (env_->PushLocalFrame(32) != 0) return nullptr;
        return env_->PopLocalFrame(items(i));
    }

    bool Class(const char* name, jclass* out) {
        *out = env_->FindClass(name);
        return *out != nullptr;
    }
    bool Method(jclass cls, const char* name, const char* sig, jmethodID* out) {
        *out = env_->GetMethodID(cls, name, sig);
        return *out != nullptr;
    }
    bool Static(jclass cls, const char* name, const char* sig, jmethodID* out) {
        *out = env_->GetStaticMethodID(cls, name, sig);
        return *out != nullptr;
    }
    jobject Frozen(jobject object, jmethodID freeze) {
        jobject frozen = env_->CallStaticObjectMethod(collections_, freeze, object);
        env_->DeleteLocalRef(object);
        return env_->ExceptionCheck() ? nullptr : frozen;
    }

    JNIEnv* env_;
    jclass integer_ = nullptr, long_ = nullptr, boolean_ = nullptr, list_ = nullptr, map_ = nullptr,
           collections_ = nullptr;
    jmethodID integer_of_ = nullptr, long_of_ = nullptr, boolean_of_ = nullptr, list_new_ = nullptr,
              list_add_ = nullptr, map_new_ = nullptr, map_put_ = nullptr, frozen_list_ = nullptr,
              frozen_map_ = nullptr;
};

jobject CallRecord(Builder& b, const simdevice::Call& call) {
    JNIEnv* env = b.env();
    jstring service = b.Text(simdevice::ServiceName(call.service));
    jstring operation = b.Text(call.operation.c_str());
    jobject args = b.List(call.args.size(), [&](size_t i) { return b.Arg(call.args[i]); });
    if (service == nullptr || operation == nullptr || args == nullptr) return nullptr;
    jobject record = b.New("com/tavrin/mmitest/sim/Call",
                           "(Ljava/lang/String;Ljava/lang/String;ILjava/util/List;)V", service,
                           operation, static_cast<jint>(call.position), args);
    env->DeleteLocalRef(service);
    env->DeleteLocalRef(operation);
    env->DeleteLocalRef(args);
    return record;
}

jobject LogRecord(Builder& b, const simdevice::LogLine& line) {
    JNIEnv* env = b.env();
    jstring tag = b.Text(line.tag.c_str());
    jstring text = ToJava(env, line.text, true);
    if (tag == nullptr || text == nullptr) return nullptr;
    jobject record =
        b.New("com/tavrin/mmitest/sim/LogLine", "(CLjava/lang/String;Ljava/lang/String;)V",
              static_cast<jchar>(line.priority), tag, text);
    env->DeleteLocalRef(tag);
    env->DeleteLocalRef(text);
    return record;
}

jobject FieldList(Builder& b, const std::vector<simdevice::Field>& fields) {
    return b.List(fields.size(), [&](size_t i) -> jobject {
        jstring type = b.Text(simdevice::TypeName(fields[i].type));
        jstring name = b.Text(fields[i].name);
        if (type == nullptr || name == nullptr) return nullptr;
        return b.New("com/tavrin/mmitest/sim/Catalogue$Field",
                     "(Ljava/lang/String;Ljava/lang/String;)V", type, name);
    });
}

jobject OperationRecord(Builder& b, simdevice::Service service,
                        const simdevice::OperationInfo& op) {
    std::vector<std::pair<jobject, jobject>> by_key;
    for (const auto& [key, answer] : op.healthy_by_key) {
        by_key.emplace_back(b.Int(key), ToJava(b.env(), answer.ToString()));
    }
    jobject values[] = {b.Text(simdevice::ServiceName(service)),
                        b.Text(op.name),
                        b.Text(op.version),
                        FieldList(b, op.args),
                        FieldList(b, op.answers),
                        ToJava(b.env(), op.Shape()),
                        ToJava(b.env(), op.healthy.ToString()),
                        b.Map(by_key)};
    for (jobject v : values) {
        if (v == nullptr) return nullptr;
    }
    return b.New("com/tavrin/mmitest/sim/Catalogue$Operation",
                 "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;ILjava/util/List;"
                 "ZLjava/util/List;Ljava/lang/String;Ljava/lang/String;Ljava/util/Map;)V",
                 values[0], values[1], values[2], static_cast<jint>(op.position), values[3],
                 op.callback ? JNI_TRUE : JNI_FALSE, values[4], values[5], values[6], values[7]);
}

jobject ServiceRecord(Builder& b, const simdevice::ServiceInfo& info) {
    const std::vector<simdevice::OperationInfo>& ops = SimDevice::Operations(info.service);
    jobject values[] = {
        b.Text(info.name),
        b.Text(info.package),
        b.Text(info.interface),
        b.List(info.versions.size(), [&](size_t i) { return b.Text(info.versions[i]); }),
        b.Text(info.instance),
        b.List(ops.size(), [&](size_t i) { return OperationRecord(b, info.service, ops[i]); })};
    for (jobject v : values) {
        if (v == nullptr) return nullptr;
    }
    return b.New("com/tavrin/mmitest/sim/Catalogue$Service",
                 "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/util/List;"
                 "Ljava/lang/String;Ljava/util/List;)V",
                 values[0], values[1], values[2], values[3], values[4], values[5]);
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

JNIEXPORT jboolean JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_waitRestarts(JNIEnv*, jclass,
                                                                                    jlong ms) {
    return Device().WaitRestarts(std::chrono::milliseconds(std::max<jlong>(ms, 0))) ? JNI_TRUE
                                                                                    : JNI_FALSE;
}

JNIEXPORT jstring JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_waitingFor(JNIEnv* env,
                                                                                 jclass) {
    return ToJava(env, Device().WaitingFor());
}

JNIEXPORT jobjectArray JNICALL
Java_com_tavrin_mmitest_sim_SimulatedDevice_pendingRegistrationArray(JNIEnv* env, jclass) {
    std::vector<std::string> names;
    for (Service s : Device().PendingRegistrations()) names.push_back(simdevice::ServiceName(s));
    return ToJavaArray(env, names);
}

JNIEXPORT jboolean JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_reviveAfter(JNIEnv* env,
                                                                                   jclass,
                                                                                   jstring service,
                                                                                   jlong ms) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return JNI_FALSE;
    if (ms < 0) {
        Throw(env, "java/lang/IllegalArgumentException",
              "revival delay " + std::to_string(ms) + " ms is negative");
        return JNI_FALSE;
    }
    return Device().ReviveAfter(*s, ms) ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT jstring JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_programSequence(
    JNIEnv* env, jclass, jstring service, jstring operation, jobjectArray answers) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return nullptr;
    if (operation == nullptr || answers == nullptr) {
        return ToJava(env, "operation and answers must not be null");
    }
    std::vector<std::string> texts;
    for (jsize i = 0; i < env->GetArrayLength(answers); ++i) {
        auto answer = static_cast<jstring>(env->GetObjectArrayElement(answers, i));
        if (answer == nullptr) return ToJava(env, "answer " + std::to_string(i + 1) + " is null");
        texts.push_back(FromJava(env, answer));
        env->DeleteLocalRef(answer);
    }
    std::string error;
    if (Device().Program(*s, FromJava(env, operation), texts, &error)) return nullptr;
    return ToJava(env, error);
}

JNIEXPORT jstring JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_setDelay(JNIEnv* env, jclass,
                                                                               jstring service,
                                                                               jstring operation,
                                                                               jlong ms) {
    std::optional<Service> s = ServiceArg(env, service);
    if (!s) return nullptr;
    if (operation == nullptr) return ToJava(env, "operation must not be null");
    if (ms < 0) return ToJava(env, "delay " + std::to_string(ms) + " ms is negative");
    std::string error;
    if (Device().SetDelay(*s, FromJava(env, operation), ms, &error)) return nullptr;
    return ToJava(env, error);
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

JNIEXPORT jboolean JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_waitIdle(JNIEnv*, jclass,
                                                                                jlong ms) {
    return SimDevice::WaitIdle(std::chrono::milliseconds(std::max<jlong>(ms, 0))) ? JNI_TRUE
                                                                                  : JNI_FALSE;
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

JNIEXPORT jobjectArray JNICALL
Java_com_tavrin_mmitest_sim_SimulatedDevice_takeCallArray(JNIEnv* env, jclass) {
    Builder b(env);
    if (!b.Init()) return nullptr;
    std::vector<simdevice::Call> calls = Device().TakeCalls();
    return b.Array("com/tavrin/mmitest/sim/Call", calls.size(),
                   [&](size_t i) { return CallRecord(b, calls[i]); });
}

JNIEXPORT jobjectArray JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_takeLogArray(JNIEnv* env,
                                                                                        jclass) {
    Builder b(env);
    if (!b.Init()) return nullptr;
    std::vector<simdevice::LogLine> lines = simdevice::TakeLogLines();
    return b.Array("com/tavrin/mmitest/sim/LogLine", lines.size(),
                   [&](size_t i) { return LogRecord(b, lines[i]); });
}

JNIEXPORT jobject JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_readCatalogue(JNIEnv* env,
                                                                                    jclass) {
    Builder b(env);
    if (!b.Init()) return nullptr;
    const size_t n = std::size(simdevice::kAllServices);
    jobject services = b.List(
        n, [&](size_t i) { return ServiceRecord(b, simdevice::Info(simdevice::kAllServices[i])); });
    const auto& keywords = simdevice::AnswerKeywords();
    jobject keyword_list = b.List(keywords.size(), [&](size_t i) -> jobject {
        jstring word = b.Text(keywords[i].word);
        jstring meaning = b.Text(keywords[i].meaning);
        if (word == nullptr || meaning == nullptr) return nullptr;
        return b.New("com/tavrin/mmitest/sim/Catalogue$Keyword",
                     "(Ljava/lang/String;ZLjava/lang/String;)V", word,
                     keywords[i].callback_only ? JNI_TRUE : JNI_FALSE, meaning);
    });
    const auto& forms = simdevice::AnswerForms();
    jobject form_list = b.List(forms.size(), [&](size_t i) -> jobject {
        jstring form = b.Text(forms[i].form);
        jstring example = b.Text(forms[i].example);
        jstring meaning = b.Text(forms[i].meaning);
        if (form == nullptr || example == nullptr || meaning == nullptr) return nullptr;
        return b.New("com/tavrin/mmitest/sim/Catalogue$Form",
                     "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V", form, example,
                     meaning);
    });
    jobject fields = b.List(std::size(simdevice::kWrittenFields),
                            [&](size_t i) { return b.Text(simdevice::kWrittenFields[i]); });
    if (services == nullptr || keyword_list == nullptr || form_list == nullptr ||
        fields == nullptr) {
        return nullptr;
    }
    return b.New("com/tavrin/mmitest/sim/Catalogue",
                 "(Ljava/util/List;Ljava/util/List;Ljava/util/List;Ljava/util/List;)V", services,
                 keyword_list, form_list, fields);
}

JNIEXPORT jboolean JNICALL Java_com_tavrin_mmitest_sim_SimulatedDevice_linked(JNIEnv* env, jclass,
                                                                              jstring service) {
    std::optional<Service> s = ServiceArg(env, service);
    return s && Device().Linked(*s) ? JNI_TRUE : JNI_FALSE;
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
