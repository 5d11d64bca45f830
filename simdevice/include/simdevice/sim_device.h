// Simulated device: the seven vendor services implemented in the host process, registered with the
// host transport under their device instance names, answering every operation with a programmable
// answer and recording every call they receive. Tests and the console drive it to put the native
// library in front of a healthy device, a missing or older service, a dying service or a service
// that answers badly.
//
// Everything here is thread-safe: calls may arrive on any number of threads while another thread
// kills, revives or reprograms services.
#ifndef SIMDEVICE_SIM_DEVICE_H
#define SIMDEVICE_SIM_DEVICE_H

#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace simdevice {

enum class Service { kFactory, kDisplay, kTouchscreen, kSensors, kPower, kLight, kOtherdevices };
inline constexpr Service kAllServices[] = {
    Service::kFactory, Service::kDisplay, Service::kTouchscreen, Service::kSensors,
    Service::kPower,   Service::kLight,   Service::kOtherdevices};

// One service as a device offers it.
struct ServiceInfo {
    Service service;
    const char* name;       // "factory", "display", "touchscreen", "sensors", "power", ...
    const char* package;    // "vendor.tavrin.hardware.kxfactoryinterface"
    const char* interface;  // "IKxFactoryInterface"
    std::vector<const char*> versions;  // oldest first: {"1.0", "1.1"}
    const char* instance;               // the name it registers under
};
const ServiceInfo& Info(Service service);

const char* ServiceName(Service service);
std::optional<Service> ServiceFromName(std::string_view name);
// "kxfactoryinterface_hal" for the factory, else "default".
const char* InstanceName(Service service);
// Whether the service has a newer minor version that it can be told not to offer.
bool HasMinorUpdate(Service service);

// The static String fields of the app's MmiNativeManager that the library writes (touch-panel and
// touch-key capacitance failure texts); a test puts them back between cases.
inline constexpr const char* kWrittenFields[] = {"sTpCapacitanceFailInfo",
                                                 "sTouchKeyCapacitanceFailInfo"};

// What an operation answers: one value, or the values it hands to its callback, or no callback at
// all, or a transport failure in the middle of the call, or a crash of the service in the middle of
// the call (a transport failure, the service's death, and its restart after the restart delay).
class Answer {
  public:
    enum class Kind { kValues, kNoCallback, kTransportError, kCrash };
    // Integers of every width travel as int64 until an operation's shape narrows them.
    using Value = std::variant<int64_t, bool, std::string, std::vector<int32_t>>;

    // Text forms: one of AnswerKeywords() as the whole answer, or values separated by commas, each
    // one of AnswerForms(). Returns nothing and sets *error (if given) when the text is not an
    // answer.
    static std::optional<Answer> Parse(std::string_view text, std::string* error);

    static Answer Values(std::vector<Value> values);
    static Answer NoCallback();
    static Answer TransportError();
    static Answer Crash();

    Kind kind() const { return kind_; }
    const std::vector<Value>& values() const { return values_; }
    // Canonical text, accepted by Parse.
    std::string ToString() const;

    bool operator==(const Answer& other) const {
        return kind_ == other.kind_ && values_ == other.values_;
    }

  private:
    Answer(Kind kind, std::vector<Value> values) : kind_(kind), values_(std::move(values)) {}
    Kind kind_;
    std::vector<Value> values_;
};

// One code point as UTF-8: the device's texts are UTF-8.
void AppendUtf8(uint32_t code_point, std::string* out);

// The answer grammar, as tools show it to their users.
struct AnswerKeyword {
    const char* word;    // "nocallback"
    bool callback_only;  // refused for operations that return a value
    const char* meaning;
};
const std::vector<AnswerKeyword>& AnswerKeywords();
struct AnswerForm {
    const char* form;     // "integer"
    const char* example;  // "-3"
    const char* meaning;
};
const std::vector<AnswerForm>& AnswerForms();

enum class Type {
    kInt32,
    kInt64,
    kBool,
    kString,
    kInt32Vector,
    kFmdMsg,
    kFmdOperation,
    kDisplayRet
};
const char* TypeName(Type type);  // "int32", "int64", "bool", "string", "int32[]", ...

struct Field {
    Type type;
    const char* name;
};

// One operation of a service.
struct OperationInfo {
    const char* name;
    const char* version;  // of the interface that declares it: "1.0", "1.1" or "2.0"
    uint32_t position;    // its transaction code, fixed by the interface's declaration order
    std::vector<Field> args;
    bool callback;               // answers through a callback rather than a returned value
    std::vector<Field> answers;  // the returned value, or the callback's arguments
    // What a healthy device answers, fitted to the shape.
    Answer healthy = Answer::Values({});
    // Where the healthy answer depends on the first argument (getFactoryInfo's info kind): the
    // answer for each key; other keys get healthy.
    std::vector<std::pair<int32_t, Answer>> healthy_by_key;
    // "value: int64" or "callback: int32 resultCode, int32[] samples".
    std::string Shape() const;
};

// An argument as a call delivered it, as plain values: texts are the bytes received, records
// their fields in declaration order, vectors of records lists.
struct ArgValue;
using ArgRecord = std::vector<std::pair<std::string, ArgValue>>;
struct ArgValue {
    std::variant<int32_t, int64_t, bool, std::string, std::vector<int32_t>, ArgRecord,
                 std::vector<ArgValue>>
        value;
};

// One call that reached a service.
struct Call {
    Service service;
    std::string operation;
    uint32_t position;  // as the transport delivered it; 0 when called without the transport
    std::vector<ArgValue> args;
    // "service.operation(arg, arg)": ints in decimal, bools as true/false, texts JSON-quoted,
    // int vectors as [1, 2, 3] (the first 32 values, then ", ... (N values)]"), records as
    // {field: value, ...}, lists of records as [{...}, {...}].
    std::string Text() const;
};

namespace internal {
class Core;
class ServiceHost;
}  // namespace internal

class SimDevice {
  public:
    SimDevice();
    // Kills every service this device registered.
    ~SimDevice();
    SimDevice(const SimDevice&) = delete;
    SimDevice& operator=(const SimDevice&) = delete;

    // The operations of a service that the native library calls, in position order.
    static const std::vector<OperationInfo>& Operations(Service service);
    static const OperationInfo* FindOperation(Service service, std::string_view operation);

    // Leaves the service undeclared and unregistered at Start: lookups of it answer empty at once.
    // Every other service is declared, as a device's manifest declares it, so a lookup of it waits
    // while it is not registered (late, killed or crashed). False (and no effect) once started.
    bool SetAbsent(Service service, bool absent);
    // Registers the service ms milliseconds after Start rather than at Start. False (and no
    // effect) once started.
    bool SetStartDelay(Service service, int64_t ms);
    // How long a service that crashed in the middle of a call stays down before it registers again,
    // as the platform restarts it; negative: it stays down. kDefaultRestartDelayMs at first.
    void SetRestartDelay(int64_t ms);
    static constexpr int64_t kDefaultRestartDelayMs = 300;
    // Registers the service with its 1.0 interface chain only, so that casts to 1.1 answer empty.
    // Takes effect at the service's next registration (Start, or Revive after Kill). False for a
    // service with a single version.
    bool SetOnlyV10(Service service, bool only);

    // Registers every service not configured absent. Later calls do nothing.
    void Start();
    // Kills the service's registration: calls through existing handles fail with a transport error
    // and linked death recipients are told. False when it was not registered.
    bool Kill(Service service);
    // Registers the service (again): a new registration report. False when already registered.
    bool Revive(Service service);
    // Registers the service ms milliseconds from now, on the device's own thread, and returns at
    // once: a client's lookup waits for it as on a device. False when it is registered.
    bool ReviveAfter(Service service, int64_t ms);
    bool IsRegistered(Service service) const;
    // Whether a client holds a death link to the service's current registration: for the native
    // library, whether its handle of the service is connected.
    bool Linked(Service service) const;
    // Returns once every registration still to come (a start delay, a crashed service's restart,
    // a ReviveAfter) has been made and its reports delivered, or false when timeout ran out first
    // (WaitingFor says what was still to come). Services set to stay down are not waited for.
    bool WaitRestarts(std::chrono::milliseconds timeout);
    // The services whose registration is still to come, soonest first.
    std::vector<Service> PendingRegistrations() const;
    // What the waits here may be waiting for, in words: registrations still to come, and declared
    // services that are not registered (a client's lookup of one waits, and with it every report
    // behind the client's handler).
    std::string WaitingFor() const;
    // Takes the service off a started device as if it had never been there: killed if registered
    // and undeclared, so that lookups answer empty at once, until Reset. Clients see its death.
    void Withdraw(Service service);

    // Programs the answer of every later call of the operation. An answer with fewer callback
    // values than the callback takes is completed with 0, false, "" and []. "nocallback" is refused
    // for operations that return a value; they can fail with "transport-error" instead.
    bool Program(Service service, std::string_view operation, std::string_view answer,
                 std::string* error);
    bool Program(Service service, std::string_view operation, const Answer& answer,
                 std::string* error);
    // Programs a sequence: successive calls take successive answers, and the last one holds. All
    // or nothing: one refused answer leaves the operation as it was.
    bool Program(Service service, std::string_view operation,
                 const std::vector<std::string>& answers, std::string* error);
    // Makes every later call of the operation take ms milliseconds before it answers (0: at
    // once), as a slow service does. ResetAnswers ends it.
    bool SetDelay(Service service, std::string_view operation, int64_t ms, std::string* error);
    // The answer the next call of the operation gets, for operations whose default does not
    // depend on the call's arguments; getFactoryInfo's default is keyed by its info kind.
    std::optional<Answer> CurrentAnswer(Service service, std::string_view operation) const;
    // Every operation back to its healthy answer, at once.
    void ResetAnswers();

    // Every call recorded since the last take, oldest first. The record keeps the newest 65536.
    std::vector<Call> TakeCalls();
    // The last vector, FmdMsg and FmdOperation that reached the services, as received.
    std::optional<std::vector<int32_t>> LastVector(Service service,
                                                   std::string_view operation) const;
    std::optional<::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg> LastFmdMsg() const;
    std::optional<::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation>
    LastFmdOperation() const;

    // Back to a started healthy device: default answers, no configuration (restart delay the
    // default, nothing left to register later), no records, every
    // service registered with its full version. Services that already are stay untouched; one
    // registered 1.0-only is killed and registered again, so clients see a death and a
    // registration.
    void Reset();

    // Returns once every death and registration report posted so far has been delivered, or
    // false when timeout ran out first.
    static bool WaitIdle(std::chrono::milliseconds timeout);

    // The two waits for callers that have no way out when one runs out (test harnesses): bounded
    // by kWaitBound, after which the process ends, saying what it waited for.
    static constexpr std::chrono::seconds kWaitBound{30};
    void WaitRestarts();
    static void WaitIdle();

  private:
    struct Slot;
    struct Schedule;
    bool RegisterLocked(Slot& slot);
    void KillLocked(Slot& slot);
    void DeclareLocked(Slot& slot, bool declared);
    // Registers the service after ms milliseconds, on the device's scheduling thread.
    void RegisterLater(Service service, int64_t ms);
    void Crash(Service service);
    void CrashNow(Service service);

    std::shared_ptr<internal::Core> core_;
    mutable std::mutex lifecycle_;
    bool started_ = false;
    std::vector<std::unique_ptr<Slot>> slots_;
    std::unique_ptr<Schedule> schedule_;
};

}  // namespace simdevice

#endif
