#include <halvane/os/DebugOutput.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <string>

#include <unicode/ustring.h>

namespace halvane::os {

namespace {

std::mutex sinkMutex;
DebugOutputSink currentSink;

std::string toUTF8(std::u16string_view text) {
    std::string out(text.size() * 3, '\0');
    int32_t written = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(out.data(), int32_t(out.size()), &written, text.data(), int32_t(text.size()), 0xFFFD, nullptr,
                       &status);
    out.resize(U_SUCCESS(status) ? size_t(written) : 0);
    return out;
}

void writeToStandardErrorWhenWatched(std::u16string_view text) {
    const char* forced = std::getenv("HALVANE_DEBUG_OUTPUT");
    bool enabled = (forced != nullptr && std::strcmp(forced, "1") == 0) || IsDebuggerAttached();
    if (!enabled) return;
    std::string utf8 = toUTF8(text);
    std::fwrite(utf8.data(), 1, utf8.size(), stderr);
    std::fflush(stderr);
}

}  // namespace

bool IsDebuggerAttached() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("TracerPid:", 0) == 0) return std::strtol(line.c_str() + 10, nullptr, 10) != 0;
    }
    return false;
}

void WriteDebugOutput(std::u16string_view text) {
    DebugOutputSink sink;
    {
        std::lock_guard lock(sinkMutex);
        sink = currentSink;
    }
    if (sink) {
        sink(text);
    } else {
        writeToStandardErrorWhenWatched(text);
    }
}

DebugOutputSink SetDebugOutputSink(DebugOutputSink sink) {
    std::lock_guard lock(sinkMutex);
    DebugOutputSink previous = std::move(currentSink);
    currentSink = std::move(sink);
    return previous;
}

}  // namespace halvane::os
