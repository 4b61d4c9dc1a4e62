#include <halvane/errors/HVAssert.h>

#include <halvane/core/HVObject.h>
#include <halvane/errors/HVLog.h>
#include <halvane/text/HVString.h>

#include <cstring>
#include <string>

namespace {

// "Class::Method" from a full signature such as
// "static HVArray HVJSONSerialization::ArrayWithJSONData(const HVData&)";
// a name that is already short comes back as it is.
std::string functionName(const char* function) {
    std::string text = function != nullptr ? function : "";
    size_t open = text.find('(');
    if (open == std::string::npos) return text;
    std::string head = text.substr(0, open);
    size_t space = head.find_last_of(' ');
    return space == std::string::npos ? head : head.substr(space + 1);
}

// The source file's name without directory and extension.
std::string fileName(const char* file) {
    std::string text = file != nullptr ? file : "";
    size_t slash = text.find_last_of('/');
    if (slash != std::string::npos) text.erase(0, slash + 1);
    size_t dot = text.find_last_of('.');
    if (dot != std::string::npos && dot > 0) text.erase(dot);
    return text;
}

}  // namespace

void HVAssertionFailed(const char* condition, const HVObject& message, const char* function, const char* file,
                       int line) {
    HVLog("Failed Assert! (%s) - %@    Function:%s File:%s Line:%d", condition, message.Ref(),
          functionName(function).c_str(), fileName(file).c_str(), line);
}

void HVAssertionFailed(const char* condition, const char* message, const char* function, const char* file, int line) {
    HVLog("Failed Assert! (%s) - %s    Function:%s File:%s Line:%d", condition, message,
          functionName(function).c_str(), fileName(file).c_str(), line);
}

void HVAssertionFailed(const char* condition, const char* function, const char* file, int line) {
    HVLog("Failed Assert! (%s)    Function:%s File:%s Line:%d", condition, functionName(function).c_str(),
          fileName(file).c_str(), line);
}

void HVAssertionFailedShort(const char* condition, const char* function, const char* file, int line) {
    HVLog("Failed Assert! (%s)  Function:%s File:%s Line:%d", condition, functionName(function).c_str(),
          fileName(file).c_str(), line);
}
