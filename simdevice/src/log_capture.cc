#include <android/log.h>
#include <simdevice/log_capture.h>

#include <deque>
#include <mutex>

namespace simdevice {

namespace {

constexpr size_t kMaxLines = 65536;

struct Captured {
    std::mutex lock;
    std::deque<std::string> lines;
};

Captured& captured() {
    static Captured* c = new Captured();  // loggers may run during static destruction
    return *c;
}

char PriorityLetter(int priority) {
    switch (priority) {
        case ANDROID_LOG_DEBUG:
            return 'D';
        case ANDROID_LOG_INFO:
            return 'I';
        case ANDROID_LOG_WARN:
            return 'W';
        case ANDROID_LOG_ERROR:
            return 'E';
        default:
            return priority >= ANDROID_LOG_FATAL ? 'F' : 'V';
    }
}

void Capture(const __android_logger_data* data, const char* message) {
    std::string line;
    line += PriorityLetter(data != nullptr ? data->priority : ANDROID_LOG_VERBOSE);
    line += ' ';
    if (data != nullptr && data->tag != nullptr && data->tag[0] != '\0') {
        line += data->tag;
        line += ": ";
    }
    line += message != nullptr ? message : "";
    Captured& c = captured();
    std::lock_guard<std::mutex> lock(c.lock);
    if (c.lines.size() >= kMaxLines) c.lines.pop_front();
    c.lines.push_back(std::move(line));
}

}  // namespace

void CaptureLogs() {
    __android_log_set_logger(Capture);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_default_tag("");  // the library's lines have none; the platform's do
}

std::vector<std::string> TakeLogs() {
    Captured& c = captured();
    std::lock_guard<std::mutex> lock(c.lock);
    std::vector<std::string> taken(std::make_move_iterator(c.lines.begin()),
                                   std::make_move_iterator(c.lines.end()));
    c.lines.clear();
    return taken;
}

}  // namespace simdevice
