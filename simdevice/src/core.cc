// The shared state of one device: answers, the call record and typed copies of what arrived.
#include <hidl/HostTransport.h>

#include <cstdio>
#include <cstdlib>

#include "internal.h"

namespace simdevice {
namespace internal {

namespace {

void AppendVector(const ::android::hardware::hidl_vec<int32_t>& v, std::string* out) {
    // Long vectors (256 flicker samples) would drown the record; the typed copy keeps them whole.
    constexpr size_t kShown = 32;
    *out += '[';
    for (size_t i = 0; i < v.size() && i < kShown; ++i) {
        if (i != 0) *out += ", ";
        *out += std::to_string(v[i]);
    }
    if (v.size() > kShown) *out += ", ... (" + std::to_string(v.size()) + " values)";
    *out += ']';
}

std::string FormatEvent(const ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdEvent& e) {
    return "{errorCode: " + std::to_string(e.errorCode) + ", itemId: " + std::to_string(e.itemId) +
           ", cycle: " + std::to_string(e.cycle) + ", result: " + Quote(e.result) +
           ", station: " + Quote(e.station) + ", bsn: " + Quote(e.bsn) +
           ", time: " + Quote(e.time) + ", deviceName: " + Quote(e.deviceName) +
           ", testName: " + Quote(e.testName) + ", value: " + Quote(e.value) +
           ", thresholdMin: " + Quote(e.thresholdMin) + ", thresholdMax: " + Quote(e.thresholdMax) +
           ", firmware: " + Quote(e.firmware) + ", description: " + Quote(e.description) + "}";
}

// The operation a service object claims to serve; a name missing from the tables is a defect of
// this library.
const OperationInfo& Find(Service service, std::string_view operation) {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    if (info == nullptr) {
        std::fprintf(stderr, "simdevice: %s has no operation %.*s\n", ServiceName(service),
                     static_cast<int>(operation.size()), operation.data());
        std::abort();
    }
    return *info;
}

}  // namespace

std::string Quote(std::string_view text) {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out = "\"";
    for (char c : text) {
        auto u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (u < 0x20 || u == 0x7F) {
            out += "\\u00";
            out += kHex[u >> 4];
            out += kHex[u & 0xF];
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string FormatArg(const Arg& arg) {
    struct Formatter {
        std::string operator()(int32_t v) const { return std::to_string(v); }
        std::string operator()(int64_t v) const { return std::to_string(v); }
        std::string operator()(bool v) const { return v ? "true" : "false"; }
        std::string operator()(const ::android::hardware::hidl_string& v) const { return Quote(v); }
        std::string operator()(const ::android::hardware::hidl_vec<int32_t>& v) const {
            std::string out;
            AppendVector(v, &out);
            return out;
        }
        std::string operator()(const FmdMsg& m) const {
            std::string out = "{version: " + std::to_string(m.version) +
                              ", dataSource: " + std::to_string(m.dataSource) +
                              ", eventCount: " + std::to_string(m.eventCount) + ", events: [";
            for (size_t i = 0; i < m.events.size(); ++i) {
                if (i != 0) out += ", ";
                out += FormatEvent(m.events[i]);
            }
            return out + "]}";
        }
        std::string operator()(const FmdOperation& o) const {
            return "{version: " + std::to_string(o.version) +
                   ", commandId: " + std::to_string(o.commandId) +
                   ", operation: " + std::to_string(o.operation) +
                   ", cycle: " + std::to_string(o.cycle) + ", station: " + Quote(o.station) +
                   ", bsn: " + Quote(o.bsn) + "}";
        }
    };
    return std::visit(Formatter{}, arg);
}

Answer Core::Serve(Service service, const char* operation, std::vector<Arg> args) {
    const OperationInfo& info = Find(service, operation);
    const ::android::hardware::details::Transaction* transaction =
        ::android::hardware::details::currentTransaction();
    Call call{service, info.name, transaction != nullptr ? transaction->position : 0u, {}};
    call.args.reserve(args.size());
    for (const Arg& arg : args) call.args.push_back(FormatArg(arg));

    std::lock_guard<std::mutex> lock(lock_);
    if (calls_.size() >= kMaxCalls) calls_.pop_front();
    calls_.push_back(std::move(call));
    for (Arg& arg : args) {
        if (auto* v = std::get_if<::android::hardware::hidl_vec<int32_t>>(&arg)) {
            last_vectors_[&info] = *v;
        } else if (auto* m = std::get_if<FmdMsg>(&arg)) {
            last_msg_ = std::move(*m);
        } else if (auto* o = std::get_if<FmdOperation>(&arg)) {
            last_operation_ = std::move(*o);
        }
    }
    auto programmed = programmed_.find(&info);
    if (programmed != programmed_.end()) return programmed->second;
    if (!args.empty() && std::holds_alternative<int32_t>(args[0])) {
        if (const Answer* keyed = KeyedDefaultAnswer(info, std::get<int32_t>(args[0]))) {
            return *keyed;
        }
    }
    return DefaultAnswer(info);
}

bool Core::Program(Service service, std::string_view operation, const Answer& answer,
                   std::string* error) {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    if (info == nullptr) {
        if (error != nullptr) {
            *error = std::string(ServiceName(service)) + " has no operation \"" +
                     std::string(operation) + "\"; it has:";
            for (const OperationInfo& op : SimDevice::Operations(service)) {
                *error += ' ';
                *error += op.name;
            }
        }
        return false;
    }
    std::optional<Answer> fitted = FitAnswer(*info, answer, error);
    if (!fitted) {
        if (error != nullptr) *error = std::string(ServiceName(service)) + "." + *error;
        return false;
    }
    std::lock_guard<std::mutex> lock(lock_);
    programmed_.insert_or_assign(info, std::move(*fitted));
    return true;
}

std::optional<Answer> Core::CurrentAnswer(Service service, std::string_view operation) const {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    if (info == nullptr) return std::nullopt;
    std::lock_guard<std::mutex> lock(lock_);
    auto programmed = programmed_.find(info);
    if (programmed != programmed_.end()) return programmed->second;
    return DefaultAnswer(*info);
}

void Core::SetCrashHandler(std::function<void(Service)> handler) {
    std::lock_guard<std::mutex> lock(crash_lock_);
    crash_handler_ = std::move(handler);
}

void Core::Crash(Service service) {
    std::lock_guard<std::mutex> lock(crash_lock_);
    if (crash_handler_) crash_handler_(service);
}

void Core::ResetAnswers() {
    std::lock_guard<std::mutex> lock(lock_);
    programmed_.clear();
}

std::vector<Call> Core::TakeCalls() {
    std::lock_guard<std::mutex> lock(lock_);
    std::vector<Call> taken(std::make_move_iterator(calls_.begin()),
                            std::make_move_iterator(calls_.end()));
    calls_.clear();
    return taken;
}

void Core::ClearRecords() {
    std::lock_guard<std::mutex> lock(lock_);
    calls_.clear();
    last_vectors_.clear();
    last_msg_.reset();
    last_operation_.reset();
}

std::optional<std::vector<int32_t>> Core::LastVector(Service service,
                                                     std::string_view operation) const {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    std::lock_guard<std::mutex> lock(lock_);
    auto it = last_vectors_.find(info);
    if (it == last_vectors_.end()) return std::nullopt;
    return it->second;
}

std::optional<FmdMsg> Core::LastFmdMsg() const {
    std::lock_guard<std::mutex> lock(lock_);
    return last_msg_;
}

std::optional<FmdOperation> Core::LastFmdOperation() const {
    std::lock_guard<std::mutex> lock(lock_);
    return last_operation_;
}

}  // namespace internal

std::string Call::Text() const {
    std::string out = std::string(ServiceName(service)) + "." + operation + "(";
    for (size_t i = 0; i < args.size(); ++i) {
        if (i != 0) out += ", ";
        out += args[i];
    }
    return out + ")";
}

}  // namespace simdevice
