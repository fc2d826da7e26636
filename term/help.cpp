#include "term/help.h"

#include <algorithm>
#include <string_view>

#include "term/options.h"

namespace {

constexpr std::size_t kTextColumn = 27; // where an option's text starts
constexpr std::size_t kWidth = 80;

constexpr const char* kUsage = "Usage: parvigif [OPTION]... NAME...\n"
                               "Make GIF files smaller, in place.\n";

constexpr const char* kIntroduction = R"(
A NAME is a GIF file, a folder (its GIF files, not those of its subfolders), or
a pattern with * and ? in quotes. A file is replaced only when the new one is
smaller and plays the same: screen, frames, timing, loop and shape are checked
on the finished file. Colours may change a little: a file made smaller has at
most 128 of them, and what differs by up to 28 steps of 255 from the frame
before counts as equal.

A file changes in one step or not at all, whatever happens. Its original is kept
beside it as NAME.BAK, unless there is one already. A symbolic link stays one:
the file it leads to is replaced. Of several hard links only the named one
leads to the new file.
)";

constexpr const char* kClosing = R"(
Preferences
  BACKUP, OBACK, ALLOWCROP, LOG and LOGALL hold what the options above change
  for one run. They are read from Norvek/Parvigif/1.x.ini below /etc/xdg, then
  below ~/.config (or $XDG_CONFIG_DIRS, $XDG_CONFIG_HOME): lines like BACKUP=0.

Results log
  PVGFLog.TXT in ~/.local/state/Norvek (or $XDG_STATE_HOME/Norvek).

Exit status
  0    every file was made smaller or found unchanged
  1    at least one file or name could not be handled; the others were
  2    the command line makes no sense; nothing was done
  130  cancelled: Ctrl-C lets the file in hand finish or leaves it as it was; a
       second Ctrl-C ends at once, and every file is still whole

Examples
  parvigif banner.gif           make one file smaller, keep banner.gif.BAK
  parvigif --no-backup pics/    all GIF files of a folder, without backups
  parvigif 'pics/icon-*.gif'    those that match
)";

std::string OptionHead(const TermOption& inOption) {
    std::string head = "  ";
    head += inOption.mShort ? std::string("-") + inOption.mShort : "  ";
    if (inOption.mName)
        head += std::string(inOption.mShort ? ", --" : "  --") + inOption.mName;
    if (inOption.mArgument)
        head += std::string(" ") + inOption.mArgument;
    return head;
}

/** Words set from kTextColumn to kWidth, line by line. */
std::string Indented(std::string_view inText) {
    std::string lines;
    while (!inText.empty()) {
        std::size_t length = std::min(inText.size(), kWidth - kTextColumn);
        if (length < inText.size())
            length = inText.rfind(' ', length);
        lines += std::string(kTextColumn, ' ') + std::string(inText.substr(0, length)) + "\n";
        inText.remove_prefix(std::min(inText.size(), length + 1));
    }
    return lines;
}

std::string OptionText(const TermOption& inOption, bool inFull) {
    std::string text = OptionHead(inOption);
    text.resize(std::max(text.size() + 1, kTextColumn), ' ');
    text += std::string(inOption.mBrief) + "\n";
    if (inFull && inOption.mMore)
        text += Indented(inOption.mMore);
    return text;
}

std::string AllOptions(bool inFull) {
    std::string text;
    std::string_view group;
    for (const TermOption& option : TermGetOptions()) {
        if (group != option.mGroup) {
            group = option.mGroup;
            text += "\n" + std::string(group) + "\n";
        }
        text += OptionText(option, inFull);
    }
    return text;
}

} // namespace

std::string TermBriefHelp() {
    return kUsage + AllOptions(false) + "\nThe whole help: parvigif --help\n";
}

std::string TermFullHelp() {
    return std::string(kUsage) + kIntroduction + AllOptions(true) + kClosing;
}

std::string TermVersion() {
    return "parvigif " PARVIGIF_VERSION "\n";
}
