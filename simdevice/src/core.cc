// The shared state of one device: answers, the call record and typed copies of what arrived.
#include <hidl/HostTransport.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "internal.h"

namespace simdevice {
namespace internal {

namespace {

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

ArgValue ToArgValue(const Arg& arg) {
    struct Converter {
        ArgValue operator()(int32_t v) const { return {v}; }
        ArgValue operator()(int64_t v) const { return {v}; }
        ArgValue operator()(bool v) const { return {v}; }
        ArgValue operator()(const ::android::hardware::hidl_string& v) const {
            return {std::string(v.c_str(), v.size())};
        }
        ArgValue operator()(const ::android::hardware::hidl_vec<int32_t>& v) const {
            return {std::vector<int32_t>(v.begin(), v.end())};
        }
        ArgValue operator()(const FmdMsg& m) const {
            std::vector<ArgValue> events;
            for (const auto& e : m.events) {
                events.push_back({ArgRecord{
                    {"errorCode", {e.errorCode}},
                    {"itemId", {e.itemId}},
                    {"cycle", {e.cycle}},
                    {"result", Text(e.result)},
                    {"station", Text(e.station)},
                    {"bsn", Text(e.bsn)},
                    {"time", Text(e.time)},
                    {"deviceName", Text(e.deviceName)},
                    {"testName", Text(e.testName)},
                    {"value", Text(e.value)},
                    {"thresholdMin", Text(e.thresholdMin)},
                    {"thresholdMax", Text(e.thresholdMax)},
                    {"firmware", Text(e.firmware)},
                    {"description", Text(e.description)},
                }});
            }
            return {ArgRecord{{"version", {m.version}},
                              {"dataSource", {m.dataSource}},
                              {"eventCount", {m.eventCount}},
                              {"events", {std::move(events)}}}};
        }
        ArgValue operator()(const FmdOperation& o) const {
            return {ArgRecord{{"version", {o.version}},
                              {"commandId", {o.commandId}},
                              {"operation", {o.operation}},
                              {"cycle", {o.cycle}},
                              {"station", Text(o.station)},
                              {"bsn", Text(o.bsn)}}};
        }
        static ArgValue Text(const ::android::hardware::hidl_string& s) {
            return {std::string(s.c_str(), s.size())};
        }
    };
    return std::visit(Converter{}, arg);
}

std::string FormatArg(const ArgValue& arg) {
    struct Formatter {
        std::string operator()(int32_t v) const { return std::to_string(v); }
        std::string operator()(int64_t v) const { return std::to_string(v); }
        std::string operator()(bool v) const { return v ? "true" : "false"; }
        std::string operator()(const std::string& v) const { return Quote(std::string_view(v)); }
        std::string operator()(const std::vector<int32_t>& v) const {
            // Long vectors would drown the record; the value itself keeps them whole.
            constexpr size_t kShown = 32;
            std::string out = "[";
            for (size_t i = 0; i < v.size() && i < kShown; ++i) {
                if (i != 0) out += ", ";
                out += std::to_string(v[i]);
            }
            if (v.size() > kShown) out += ", ... (" + std::to_string(v.size()) + " values)";
            return out + "]";
        }
        std::string operator()(const ArgRecord& r) const {
            std::string out = "{";
            for (size_t i = 0; i < r.size(); ++i) {
                if (i != 0) out += ", ";
                out += r[i].first + ": " + FormatArg(r[i].second);
            }
            return out + "}";
        }
        std::string operator()(const std::vector<ArgValue>& list) const {
            std::string out = "[";
            for (size_t i = 0; i < list.size(); ++i) {
                if (i != 0) out += ", ";
                out += FormatArg(list[i]);
            }
            return out + "]";
        }
    };
    return std::visit(Formatter{}, arg.value);
}

Answer Core::Serve(Service service, const char* operation, std::vector<Arg> args) {
    const OperationInfo& info = Find(service, operation);
    const ::android::hardware::details::Transaction* transaction =
        ::android::hardware::details::currentTransaction();
    Call call{service, info.name, transaction != nullptr ? transaction->position : 0u, {}};
    call.args.reserve(args.size());
    for (const Arg& arg : args) call.args.push_back(ToArgValue(arg));

    std::unique_lock<std::mutex> lock(lock_);
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
    std::optional<int64_t> key;
    if (!args.empty() && std::holds_alternative<int32_t>(args[0])) key = std::get<int32_t>(args[0]);
    Answer answer = HealthyAnswer(info, key);
    auto programmed = programmed_.find(&info);
    if (programmed != programmed_.end()) {
        Sequence& s = programmed->second;
        answer = s.answers[std::min(s.next, s.answers.size() - 1)];
        if (s.next < s.answers.size()) ++s.next;
    }
    auto delay = delays_.find(&info);
    if (delay != delays_.end()) {
        std::chrono::milliseconds ms(delay->second);
        lock.unlock();
        std::this_thread::sleep_for(ms);
    }
    return answer;
}

const OperationInfo* Core::Operation(Service service, std::string_view operation,
                                     std::string* error) {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    if (info == nullptr && error != nullptr) {
        *error = std::string(ServiceName(service)) + " has no operation \"" +
                 std::string(operation) + "\"; it has:";
        for (const OperationInfo& op : SimDevice::Operations(service)) {
            *error += ' ';
            *error += op.name;
        }
    }
    return info;
}

bool Core::Program(Service service, std::string_view operation, const std::vector<Answer>& answers,
                   std::string* error) {
    const OperationInfo* info = Operation(service, operation, error);
    if (info == nullptr) return false;
    if (answers.empty()) {
        if (error != nullptr) *error = "no answer given for " + std::string(operation);
        return false;
    }
    Sequence sequence;
    for (size_t i = 0; i < answers.size(); ++i) {
        std::optional<Answer> fitted = FitAnswer(*info, answers[i], error);
        if (!fitted) {
            if (error != nullptr) {
                *error = (answers.size() > 1 ? "answer " + std::to_string(i + 1) + " of " +
                                                   std::to_string(answers.size()) + ": "
                                             : std::string()) +
                         ServiceName(service) + "." + *error;
            }
            return false;
        }
        sequence.answers.push_back(std::move(*fitted));
    }
    std::lock_guard<std::mutex> lock(lock_);
    programmed_.insert_or_assign(info, std::move(sequence));
    return true;
}

bool Core::SetDelay(Service service, std::string_view operation, int64_t ms, std::string* error) {
    const OperationInfo* info = Operation(service, operation, error);
    if (info == nullptr) return false;
    std::lock_guard<std::mutex> lock(lock_);
    if (ms > 0) {
        delays_.insert_or_assign(info, ms);
    } else {
        delays_.erase(info);
    }
    return true;
}

std::optional<Answer> Core::CurrentAnswer(Service service, std::string_view operation) const {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    if (info == nullptr) return std::nullopt;
    std::lock_guard<std::mutex> lock(lock_);
    auto programmed = programmed_.find(info);
    if (programmed != programmed_.end()) {
        const Sequence& s = programmed->second;
        return s.answers[std::min(s.next, s.answers.size() - 1)];
    }
    return info->healthy;
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
    delays_.clear();
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
        out += internal::FormatArg(args[i]);
    }
    return out + ")";
}

}  // namespace simdevice
