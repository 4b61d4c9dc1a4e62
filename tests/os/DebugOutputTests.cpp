// The debugger output channel and its replaceable sink.
#include <halvane/os/DebugOutput.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

using namespace halvane::os;

TEST(DebugOutput, InstalledSinkReceivesTextAndCanBeRestored) {
    std::u16string captured;
    DebugOutputSink previous = SetDebugOutputSink([&captured](std::u16string_view text) { captured += text; });
    WriteDebugOutput(u"first line\n");
    WriteDebugOutput(u"Grüße \U0001F600");
    EXPECT_EQ(captured, u"first line\nGrüße \U0001F600");

    DebugOutputSink mine = SetDebugOutputSink(previous);
    ASSERT_TRUE(mine);
    WriteDebugOutput(u"not captured");
    EXPECT_EQ(captured, u"first line\nGrüße \U0001F600");
}

// The default sink writes to standard error only when asked to (or under a
// debugger): capture file descriptor 2 around a write.
static std::string stderrDuring(void (*action)()) {
    std::fflush(stderr);
    char path[] = "/tmp/halvane-debug-XXXXXX";
    int file = mkstemp(path);
    int saved = dup(2);
    dup2(file, 2);
    action();
    std::fflush(stderr);
    dup2(saved, 2);
    close(saved);
    std::string text;
    char buffer[256];
    lseek(file, 0, SEEK_SET);
    for (ssize_t n; (n = read(file, buffer, sizeof buffer)) > 0;) text.append(buffer, size_t(n));
    close(file);
    unlink(path);
    return text;
}

TEST(DebugOutput, DefaultSinkWritesUTF8OnlyWhenEnabled) {
    SetDebugOutputSink({});
    ASSERT_FALSE(IsDebuggerAttached());
    unsetenv("HALVANE_DEBUG_OUTPUT");
    EXPECT_EQ(stderrDuring([] { WriteDebugOutput(u"quiet"); }), "");
    setenv("HALVANE_DEBUG_OUTPUT", "1", 1);
    EXPECT_EQ(stderrDuring([] { WriteDebugOutput(u"caf\u00E9 \xD800!"); }), "caf\xC3\xA9 \xEF\xBF\xBD!");
    unsetenv("HALVANE_DEBUG_OUTPUT");
}
