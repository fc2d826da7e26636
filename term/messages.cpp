#include "term/messages.h"

#include <array>
#include <cstdio>

namespace {

void PrintLine(const std::string& inText) {
    std::fflush(stdout); // so that complaint and results keep their order on a terminal
    const std::string line = "parvigif: " + inText + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string About(const std::string& inName, const std::string& inText) {
    return (inName.empty() ? "''" : TermPrintable(inName)) + ": " + inText;
}

} // namespace

std::string TermPrintable(std::string_view inText) {
    std::string text;
    for (const char character : inText) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            text += "\\n";
        } else if (byte < 0x20 || byte == 0x7f) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(byte));
            text += escape.data();
        } else {
            text += character;
        }
    }
    return text;
}

void TermMessages::Error(const std::string& inText, TermExit inExit) {
    mExit = TermWorse(mExit, inExit);
    PrintLine(inText);
}

void TermMessages::FileError(const std::string& inName, const std::string& inText) {
    Error(About(inName, inText));
}

void TermMessages::Note(const std::string& inText) {
    if (!mQuiet)
        PrintLine(inText);
}

void TermMessages::FileNote(const std::string& inName, const std::string& inText) {
    Note(About(inName, inText));
}
