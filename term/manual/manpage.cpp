#include "term/manual/manpage.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "term/options/help.h"
#include "term/options/manualtext.h"
#include "term/options/options.h"

namespace {

/** Text that troff shows as it is. A line that starts with a stop or a quote would be a request. */
std::string Escaped(std::string_view inText) {
    std::string text;
    for (const char character : inText) {
        if (character == '\\')
            text += "\\e";
        else if (character == '-')
            text += "\\-";
        else
            text += character;
    }
    if (text.starts_with('.') || text.starts_with('\''))
        text.insert(0, "\\&");
    return text;
}

std::string Bold(std::string_view inText) {
    return "\\fB" + Escaped(inText) + "\\fR";
}

std::string Heading(const char* inMacro, const std::string& inText) {
    return std::string(inMacro) + " \"" + inText + "\"\n";
}

std::string Capitals(std::string inText) {
    std::transform(inText.begin(), inText.end(), inText.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return inText;
}

/** Briefs start in lower case and have no stop, since most help lines show them alone. */
std::string Sentence(std::string inBrief) {
    inBrief.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(inBrief.front())));
    return inBrief + ".";
}

std::string OptionEntry(const TermOption& inOption) {
    std::string head;
    if (inOption.mShort)
        head = Bold(std::string("-") + inOption.mShort);
    if (inOption.mShort && inOption.mName)
        head += ", ";
    if (inOption.mName)
        head += Bold(std::string("--") + inOption.mName);
    if (inOption.mArgument)
        head += " \\fI" + Escaped(inOption.mArgument) + "\\fR";
    std::string text = ".TP\n" + head + "\n" + Escaped(Sentence(inOption.mBrief)) + "\n";
    if (inOption.mMore)
        text += Escaped(inOption.mMore) + "\n";
    return text;
}

std::string Options() {
    std::string text = Heading(".SH", "OPTIONS");
    std::string_view group;
    for (const TermOption& option : TermGetOptions()) {
        if (group != option.mGroup) {
            group = option.mGroup;
            text += Heading(".SS", std::string(group));
        }
        text += OptionEntry(option);
    }
    return text;
}

std::string Section(const TermManualSection& inSection) {
    std::string text = Heading(".SH", Capitals(inSection.mHeading));
    if (inSection.mProse)
        text += Escaped(inSection.mProse) + "\n";
    for (const TermManualItem& item : inSection.mItems)
        text += ".TP\n" + Bold(item.mTerm) + "\n" + Escaped(item.mText) + "\n";
    return text;
}

} // namespace

std::string TermManPage() {
    std::string version = TermVersion();
    version.pop_back();
    std::string text = ".TH PARVIGIF 1 \"\" \"" + Escaped(version) + "\" \"User Commands\"\n";
    text += Heading(".SH", "NAME") + "parvigif \\- make GIF files smaller in place\n";
    text += Heading(".SH", "SYNOPSIS") + Escaped(TermGetSynopsis()) + "\n";
    text += Heading(".SH", "DESCRIPTION");
    for (const char* paragraph : TermGetIntroduction())
        text += ".PP\n" + Escaped(paragraph) + "\n";
    text += Options();
    for (const TermManualSection& section : TermGetManualSections())
        text += Section(section);
    return text;
}
