// Captures what the library writes to the debugger output while in scope.
#ifndef HALVANE_TESTS_SUPPORT_LOGCAPTURE_H
#define HALVANE_TESTS_SUPPORT_LOGCAPTURE_H

#include <halvane/os/DebugOutput.h>

#include <string>
#include <vector>

namespace hvtest {

class LogCapture {
public:
    LogCapture() {
        previous_ = halvane::os::SetDebugOutputSink([this](std::u16string_view text) { text_ += text; });
    }
    ~LogCapture() { halvane::os::SetDebugOutputSink(previous_); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Everything written, as UTF-16.
    const std::u16string& text() const { return text_; }

    // The messages of the log lines, without the "program : time stamp : "
    // prefix and the newline, in ASCII (non-ASCII units become '?').
    std::vector<std::string> messages() const {
        std::vector<std::string> result;
        size_t start = 0;
        while (start < text_.size()) {
            size_t end = text_.find(u'\n', start);
            if (end == std::u16string::npos) end = text_.size();
            std::u16string line = text_.substr(start, end - start);
            // Skip "name : MM-dd-yyyy HH:mm:ss.SSS : ".
            size_t first = line.find(u" : ");
            size_t second = first == std::u16string::npos ? first : line.find(u" : ", first + 3);
            std::u16string message = second == std::u16string::npos ? line : line.substr(second + 3);
            std::string ascii;
            for (char16_t c : message) ascii.push_back(c < 0x80 ? char(c) : '?');
            result.push_back(ascii);
            start = end + 1;
        }
        return result;
    }

    void clear() { text_.clear(); }

private:
    halvane::os::DebugOutputSink previous_;
    std::u16string text_;
};

}  // namespace hvtest

#endif  // HALVANE_TESTS_SUPPORT_LOGCAPTURE_H
