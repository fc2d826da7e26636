#include "term/options/help.h"

#include <algorithm>
#include <string_view>

#include "term/options/manualtext.h"
#include "term/options/options.h"

namespace {

constexpr std::size_t km_TextColumn = 27; // where an option's text starts
constexpr std::size_t km_Width = 80;

/** The option as it is typed: "-q, --quiet", indented so that the long names stand in one column. */
std::string OptionHead(const TermOption& inOption) {
    std::string head = "  ";
    head += inOption.mShort ? std::string("-") + inOption.mShort : "  ";
    if (inOption.mName)
        head += std::string(inOption.mShort ? ", --" : "  --") + inOption.mName;
    if (inOption.mArgument)
        head += std::string(" ") + inOption.mArgument;
    return head;
}

/** Words set from a column to km_Width, line by line. */
std::string Indented(std::string_view inText, std::size_t inColumn) {
    std::string lines;
    while (!inText.empty()) {
        std::size_t length = std::min(inText.size(), km_Width - inColumn);
        if (length < inText.size())
            length = inText.rfind(' ', length);
        lines += std::string(inColumn, ' ') + std::string(inText.substr(0, length)) + "\n";
        inText.remove_prefix(std::min(inText.size(), length + 1));
    }
    return lines;
}

/** A head in front of its text; where it is too long, above it. */
std::string WithHead(const std::string& inHead, std::string_view inText, std::size_t inColumn) {
    std::string text = Indented(inText, inColumn);
    if (inHead.size() >= inColumn)
        return inHead + "\n" + text;
    return text.replace(0, inHead.size(), inHead);
}

std::string OptionText(const TermOption& inOption) {
    std::string text = OptionHead(inOption);
    text.resize(std::max(text.size() + 1, km_TextColumn), ' ');
    return text + inOption.mBrief + "\n";
}

std::string AllOptions(bool inFull) {
    std::string text;
    std::string_view group;
    for (const TermOption& option : TermGetOptions()) {
        if (option.mIsRare && !inFull)
            continue;
        if (group != option.mGroup) {
            group = option.mGroup;
            text += "\n" + std::string(group) + "\n";
        }
        text += OptionText(option);
    }
    return text;
}

std::string SectionText(const TermManualSection& inSection) {
    std::string text = "\n" + std::string(inSection.mHeading) + "\n";
    if (inSection.mProse)
        text += Indented(inSection.mProse, 2);
    std::size_t column = 0;
    for (const TermManualItem& item : inSection.mItems)
        column = std::max(column, std::string_view(item.mTerm).size() + 4);
    for (const TermManualItem& item : inSection.mItems)
        text += WithHead(std::string("  ") + item.mTerm, item.mText, std::min(column, km_Width / 2));
    return text;
}

std::string Usage() {
    return std::string("Usage: ") + TermGetSynopsis() + "\n" + TermGetPurpose() + "\n" +
           Indented(TermGetNames(), 0);
}

} // namespace

std::string TermBriefHelp() {
    return Usage() + AllOptions(false) + "\nThese are the most used; --help lists all options.\n";
}

std::string TermFullHelp() {
    std::string text = Usage() + AllOptions(true);
    for (const TermManualSection& section : TermGetManualSections())
        if (section.mIsInHelp)
            text += SectionText(section);
    return text + "\nThe man page and docs/options.md explain each option.\n";
}

std::string TermVersion() {
    return "parvigif " PARVIGIF_VERSION "\n";
}
