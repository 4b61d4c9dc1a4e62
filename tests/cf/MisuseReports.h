// Capture of the one-line misuse reports that the CoreFoundation layer
// writes to standard error instead of halting.
#ifndef HALVANE_TESTS_CF_MISUSE_REPORTS_H
#define HALVANE_TESTS_CF_MISUSE_REPORTS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace cftest {

// Runs action and returns what it wrote to standard error.
template <typename Action>
std::string reportsOf(Action&& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

inline long lineCount(const std::string& text) {
    return long(std::count(text.begin(), text.end(), '\n'));
}

inline long occurrences(const std::string& text, const std::string& part) {
    long found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++found;
    return found;
}

}  // namespace cftest

#endif  // HALVANE_TESTS_CF_MISUSE_REPORTS_H
