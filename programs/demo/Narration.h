// How the demonstration speaks to the person who watches it.
#pragma once

#include <string>

/// Prints short aligned lines and counts what was not as expected.
class Narration {
public:
    /// Opens a numbered step.
    void step(const std::string& title);
    /// One line: a label and what there is to say.
    void tell(const std::string& label, const std::string& text);
    /// One line that must be as expected. @return holds
    bool expect(bool holds, const std::string& label, const std::string& text);
    /// Text of several lines, set in.
    void show(const std::string& lines);
    int unexpected() const { return mUnexpected; }

private:
    int mSteps = 0;
    int mUnexpected = 0;
};
