#include <android/log.h>
#include <simdevice/log_capture.h>

#include <deque>
#include <mutex>

namespace simdevice {

namespace {

constexpr size_t kMaxLines = 65536;

struct Captured {
    std::mutex lock;
    std::deque<LogLine> lines;  // text as written
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
    LogLine line{PriorityLetter(data != nullptr ? data->priority : ANDROID_LOG_VERBOSE),
                 data != nullptr && data->tag != nullptr ? data->tag : "",
                 message != nullptr ? message : ""};
    Captured& c = captured();
    std::lock_guard<std::mutex> lock(c.lock);
    if (c.lines.size() >= kMaxLines) c.lines.pop_front();
    c.lines.push_back(std::move(line));
}

std::deque<LogLine> Take() {
    Captured& c = captured();
    std::lock_guard<std::mutex> lock(c.lock);
    std::deque<LogLine> taken;
    taken.swap(c.lines);
    return taken;
}

}  // namespace

void CaptureLogs() {
    __android_log_set_logger(Capture);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_default_tag("");  // the library's lines have none; the platform's do
}

std::vector<LogLine> TakeLogLines() {
    std::vector<LogLine> lines;
    for (LogLine& line : Take()) {
        // As the platform's log viewer shows it: the library ends its messages with one.
        while (!line.text.empty() && (line.text.back() == '\n' || line.text.back() == '\r')) {
            line.text.pop_back();
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::string> TakeLogs() {
    std::vector<std::string> lines;
    for (const LogLine& line : Take()) {
        std::string text(1, line.priority);
        text += ' ';
        if (!line.tag.empty()) text += line.tag + ": ";
        lines.push_back(text + line.text);
    }
    return lines;
}

}  // namespace simdevice
