// The global log: line format, the log file, the fallback file, the
// debugger pieces and the four assertion lines.
#include <halvane/errors/HVAssert.h>
#include <halvane/errors/HVLog.h>
#include <halvane/os/DebugOutput.h>
#include <halvane/os/Process.h>
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "support/LogCapture.h"

namespace {

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

std::string scratchDirectory() {
    char directory[] = "/tmp/halvane-log-XXXXXX";
    return mkdtemp(directory) != nullptr ? std::string(directory) : std::string();
}

std::string programName() {
    std::string path = halvane::os::ExecutablePath();
    return path.substr(path.find_last_of('/') + 1);
}

}  // namespace

TEST(GlobalLog, LinesGoToTheLogFileThatSettingThePathEmpties) {
    std::string directory = scratchDirectory();
    std::string path = directory + "/trace.log";
    { std::ofstream(path) << "left over from an earlier run\n"; }

    SetHVLogFilePath(HVString(path));
    EXPECT_EQ(readFile(path), "");
    HVLog("first %d %@", 1, HVString("line").Ref());
    HVLog("caf\xC3\xA9");
    std::string contents = readFile(path);
    std::string stamp = "\\d\\d-\\d\\d-\\d{4} \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";
    std::regex expected(programName() + " : " + stamp + " : first 1 line\n" + programName() + " : " + stamp +
                        " : caf\xC3\xA9\n");
    EXPECT_TRUE(std::regex_match(contents, expected)) << contents;

    unlink(path.c_str());
    rmdir(directory.c_str());
}

TEST(GlobalLog, ADirectoryAtThePathIsRemovedAndReplacedByAnEmptyFile) {
    std::string directory = scratchDirectory();
    std::string path = directory + "/logdir";
    mkdir(path.c_str(), 0755);
    { std::ofstream(path + "/inner.txt") << "x"; }
    SetHVLogFilePath(HVString(path));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_size, 0);
    unlink(path.c_str());
    rmdir(directory.c_str());
}

TEST(GlobalLog, WithoutAPathTheFirstLineReplacesTheFallbackFile) {
    std::string executable = halvane::os::ExecutablePath();
    std::string fallback = executable.substr(0, executable.find_last_of('/') + 1) + "HVLog.log";
    { std::ofstream(fallback) << "old contents\n"; }
    HVLog("to the fallback");
    HVLog("and again");
    std::fflush(nullptr);
    std::string contents = readFile(fallback);
    EXPECT_EQ(contents.find("old contents"), std::string::npos);
    EXPECT_NE(contents.find(" : to the fallback\n"), std::string::npos) << contents;
    EXPECT_NE(contents.find(" : and again\n"), std::string::npos) << contents;
}

TEST(GlobalLog, TheDebuggerReceivesPiecesOfAtMost1023Units) {
    std::vector<std::u16string> pieces;
    halvane::os::DebugOutputSink previous =
        halvane::os::SetDebugOutputSink([&pieces](std::u16string_view text) { pieces.emplace_back(text); });
    // The line is the prefix, the message and a newline: pad the message so
    // the whole line is 2,500 units.
    std::string prefix = programName() + " : 01-01-2000 00:00:00.000 : ";
    std::string message(2500 - prefix.size() - 1, 'x');
    HVLog(HVString(message));
    halvane::os::SetDebugOutputSink(previous);
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_EQ(pieces[0].size(), 1023u);
    EXPECT_EQ(pieces[1].size(), 1023u);
    EXPECT_EQ(pieces[2].size(), 454u);
    EXPECT_EQ(pieces[2].back(), u'\n');
}

TEST(Assertions, TheFourLineFormats) {
    hvtest::LogCapture log;
    HVAssertionFailed("! error.IsError()", HVString("an object"), "HVArray::StringAtIndex", "HVArray", 617);
    HVAssertionFailed("0", "HVMutableArray::HVMutableArray(const HVObject& Object) parameter type unhandled.",
                      "HVMutableArray::HVMutableArray", "HVMutableArray", 109);
    HVAssertionFailed("SerializedObject.IsEqualToString(STR(\"<null>\"))", "HVNull::Deserialize", "HVNull", 69);
    HVAssertionFailedShort("x > 0", "Some::Function", "Some", 7);
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 4u);
    EXPECT_EQ(messages[0],
              "Failed Assert! (! error.IsError()) - an object    Function:HVArray::StringAtIndex File:HVArray Line:617");
    EXPECT_EQ(messages[1],
              "Failed Assert! (0) - HVMutableArray::HVMutableArray(const HVObject& Object) parameter type unhandled.    "
              "Function:HVMutableArray::HVMutableArray File:HVMutableArray Line:109");
    EXPECT_EQ(messages[2],
              "Failed Assert! (SerializedObject.IsEqualToString(STR(\"<null>\")))    Function:HVNull::Deserialize "
              "File:HVNull Line:69");
    EXPECT_EQ(messages[3], "Failed Assert! (x > 0)  Function:Some::Function File:Some Line:7");
}

namespace {

struct Checker {
    static int Check(int value) {
        HVAssert(value > 1);
        HVAssert(value > 2, "needs more than two");
        HVAssert(value > 3, HVString("an object message"));
        return __LINE__;
    }
};

}  // namespace

TEST(Assertions, TheMacroNamesClassMethodAndFile) {
    hvtest::LogCapture log;
    int line = Checker::Check(5);
    EXPECT_TRUE(log.text().empty());
    Checker::Check(0);
    std::vector<std::string> messages = log.messages();
    ASSERT_EQ(messages.size(), 3u);
    std::string where = "Function:{anonymous}::Checker::Check File:LogTests Line:";
    EXPECT_EQ(messages[0], "Failed Assert! (value > 1)    " + where + std::to_string(line - 3));
    EXPECT_EQ(messages[1], "Failed Assert! (value > 2) - needs more than two    " + where + std::to_string(line - 2));
    EXPECT_EQ(messages[2], "Failed Assert! (value > 3) - an object message    " + where + std::to_string(line - 1));
}
