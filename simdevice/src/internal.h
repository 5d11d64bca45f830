// Pieces shared by the simulated device's sources.
#ifndef SIMDEVICE_SRC_INTERNAL_H
#define SIMDEVICE_SRC_INTERNAL_H

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <simdevice/sim_device.h>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace simdevice {
namespace internal {

using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation;

// An argument as a service received it.
using Arg = std::variant<int32_t, int64_t, bool, ::android::hardware::hidl_string,
                         ::android::hardware::hidl_vec<int32_t>, FmdMsg, FmdOperation>;

ArgValue ToArgValue(const Arg& arg);
std::string FormatArg(const ArgValue& arg);
// A JSON string literal: '"' and '\' escaped, control characters as \u00XX, other bytes as they
// are.
std::string Quote(std::string_view text);
inline std::string Quote(const ::android::hardware::hidl_string& text) {
    return Quote(std::string_view(text.c_str(), text.size()));
}

// The answer checked against the operation's shape, with callback values completed by defaults.
// Nothing, and *error naming the expected shape, when it does not fit.
std::optional<Answer> FitAnswer(const OperationInfo& info, const Answer& answer,
                                std::string* error);
// A refusal of the answer text, explained where a user would look: a misspelt keyword.
std::string ExplainRefusal(std::string_view text, const std::string& error);
// The healthy answer to a call whose first argument, if an integer, is key.
const Answer& HealthyAnswer(const OperationInfo& info, std::optional<int64_t> key);

// The state every service object of one device shares: answers, records, typed copies. Service
// objects keep it alive while a call is in progress, so a device may go away under a call.
class Core {
  public:
    // Records the call and returns the answer it gets, fitted to the operation's shape.
    Answer Serve(Service service, const char* operation, std::vector<Arg> args);

    // Successive calls take successive answers; the last one holds.
    bool Program(Service service, std::string_view operation, const std::vector<Answer>& answers,
                 std::string* error);
    // Each call of the operation takes ms milliseconds before it answers; 0: at once.
    bool SetDelay(Service service, std::string_view operation, int64_t ms, std::string* error);
    std::optional<Answer> CurrentAnswer(Service service, std::string_view operation) const;
    // Programmed answers and delays gone.
    void ResetAnswers();
    std::vector<Call> TakeCalls();
    void ClearRecords();

    std::optional<std::vector<int32_t>> LastVector(Service service,
                                                   std::string_view operation) const;
    std::optional<FmdMsg> LastFmdMsg() const;
    std::optional<FmdOperation> LastFmdOperation() const;

    // What a crash in the middle of a call does to the device; none: nothing beyond the failed
    // call. Clearing it waits for a crash under way to finish.
    void SetCrashHandler(std::function<void(Service)> handler);
    void Crash(Service service);

    static constexpr size_t kMaxCalls = 65536;

  private:
    struct Sequence {
        std::vector<Answer> answers;  // fitted, at least one
        size_t next = 0;              // the one the next call takes, until the last
    };
    static const OperationInfo* Operation(Service service, std::string_view operation,
                                          std::string* error);

    std::mutex crash_lock_;
    std::function<void(Service)> crash_handler_;
    mutable std::mutex lock_;
    std::map<const OperationInfo*, Sequence> programmed_;
    std::map<const OperationInfo*, int64_t> delays_;
    std::deque<Call> calls_;
    std::map<const OperationInfo*, std::vector<int32_t>> last_vectors_;
    std::optional<FmdMsg> last_msg_;
    std::optional<FmdOperation> last_operation_;
};

// A service object as the device manages it.
struct ServiceObject {
    ::android::sp<::android::hidl::base::V1_0::IBase> object;
    // Read by the object's interfaceChain: set, it reports only the 1.0 chain. Null for services
    // with a single version.
    std::shared_ptr<std::atomic<bool>> only_v10;
};
ServiceObject CreateService(Service service, std::shared_ptr<Core> core);

}  // namespace internal
}  // namespace simdevice

#endif
