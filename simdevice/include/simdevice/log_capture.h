// Captures every line the process writes to the platform log, so that tests and the console can
// show and check what the native library logged.
#ifndef SIMDEVICE_LOG_CAPTURE_H
#define SIMDEVICE_LOG_CAPTURE_H

#include <string>
#include <vector>

namespace simdevice {

// Installs the capturing logger and lowers the minimum priority to verbose. Lines logged before
// are not captured; installing again only keeps capturing.
void CaptureLogs();
// One captured line.
struct LogLine {
    char priority;     // one of V D I W E F
    std::string tag;   // empty for the library's lines, which have none
    std::string text;  // the message as formatted, without its trailing line breaks
};
// Captured lines since the last take, oldest first. At most the newest 65536 are kept.
std::vector<LogLine> TakeLogLines();
// The same, as "P TEXT" with the message unchanged, after "TAG: " for a line with a tag.
std::vector<std::string> TakeLogs();

}  // namespace simdevice

#endif
