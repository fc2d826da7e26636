#include "term/text/messages.h"

#include <array>
#include <cstdio>

namespace {

std::string Escape(unsigned char inByte) {
    std::array<char, 8> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(inByte));
    return escape.data();
}

/** Marks that turn the direction of writing: with them a name can look like another. Line separators, too. */
bool IsDirection(std::string_view inCharacter) {
    return (inCharacter >= "\xe2\x80\x8e" && inCharacter <= "\xe2\x80\x8f") ||
           (inCharacter >= "\xe2\x80\xa8" && inCharacter <= "\xe2\x80\xae") ||
           (inCharacter >= "\xe2\x81\xa6" && inCharacter <= "\xe2\x81\xa9");
}

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
    for (std::size_t i = 0; i < inText.size(); ++i) {
        const auto byte = static_cast<unsigned char>(inText[i]);
        const auto next = static_cast<unsigned char>(i + 1 < inText.size() ? inText[i + 1] : 0);
        if (byte == '\n') {
            text += "\\n";
        } else if (byte < 0x20 || byte == 0x7f) {
            text += Escape(byte);
        } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) { // U+0080 to U+009F
            text += Escape(byte) + Escape(next);
            ++i;
        } else if (IsDirection(inText.substr(i, 3))) {
            for (const char mark : inText.substr(i, 3))
                text += Escape(static_cast<unsigned char>(mark));
            i += 2;
        } else {
            text += inText[i];
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

void TermMessages::Warning(const std::string& inText) {
    PrintLine(inText);
}

void TermMessages::Note(const std::string& inText) {
    if (!mQuiet)
        PrintLine(inText);
}

void TermMessages::FileNote(const std::string& inName, const std::string& inText) {
    Note(About(inName, inText));
}
