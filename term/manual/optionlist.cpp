#include "term/manual/optionlist.h"

#include <string_view>

#include "term/options/options.h"

namespace {

constexpr std::size_t km_Width = 110;

/** Text that Markdown shows as it is. */
std::string Escaped(std::string_view inText) {
    std::string text;
    for (const char character : inText) {
        if (std::string_view("*_<>[]`\\").find(character) != std::string_view::npos)
            text += '\\';
        text += character;
    }
    return text;
}

std::string OptionHead(const TermOption& inOption) {
    std::string head;
    if (inOption.mShort)
        head = std::string("`-") + inOption.mShort + "`";
    if (inOption.mShort && inOption.mName)
        head += ", ";
    if (inOption.mName)
        head += std::string("`--") + inOption.mName +
                (inOption.mArgument ? std::string(" ") + inOption.mArgument : "") + "`";
    return head;
}

/** A list item; the lines after its first are indented below its text. */
std::string Item(std::string_view inText) {
    std::string lines;
    std::string line = "-";
    while (!inText.empty()) {
        const std::string_view word = inText.substr(0, inText.find(' '));
        inText.remove_prefix(std::min(inText.size(), word.size() + 1));
        if (line.size() + 1 + word.size() > km_Width) {
            lines += line + "\n";
            line = " ";
        }
        line += " " + std::string(word);
    }
    return lines + line + "\n";
}

} // namespace

std::string TermOptionList() {
    std::string text = "# Options\n\nThis page is made from the program: "
                       "`cmake --build --preset linux --target options_page`.\n";
    std::string_view group;
    for (const TermOption& option : TermGetOptions()) {
        if (group != option.mGroup) {
            group = option.mGroup;
            text += "\n## " + std::string(group) + "\n\n";
        }
        const std::string more = option.mMore ? std::string(" ") + option.mMore : "";
        text += Item(OptionHead(option) + ": " + Escaped(std::string(option.mBrief) + "." + more));
    }
    return text;
}
