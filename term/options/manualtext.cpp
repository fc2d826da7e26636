#include "term/options/manualtext.h"

#include <array>

#include "term/text/fillin.h"
#include "win/optimizer/base/pvoptsettings.h"

namespace {

constexpr auto km_ReplacingText = TermFillIn<km_MostColours, km_DifferenceTolerance>(
    "A file is replaced only if the new one is smaller and plays the same: screen, frames, timing, loop "
    "and shape are checked on the finished file. Colours may change a little: a file made smaller has at "
    "most # of them, and a pixel within # of 255 of what the screen shows already is not drawn again.");

constexpr auto km_Introduction = std::to_array<const char*>({
    "A NAME is a GIF file, a folder (its GIF files, with -r those of its subfolders too), or a quoted "
    "pattern with * and ?. The NAME - reads one picture from standard input and writes it to standard "
    "output.",
    km_ReplacingText.data(),
    "A file changes in one step or not at all, whatever happens. Its original is kept beside it as "
    "NAME.BAK, unless that exists already. A symbolic link stays one: the file it leads to is replaced. Of "
    "several hard links, only the one named leads to the new file.",
});

constexpr auto km_Files = std::to_array<TermManualItem>({
    {"NAME.BAK", "The original of NAME."},
    {"Norvek/Parvigif/1.x.ini",
     "Preferences and totals, in lines like BACKUP=0, below /etc/xdg and then ~/.config (or "
     "$XDG_CONFIG_DIRS, $XDG_CONFIG_HOME). --preferences lists them; options override them for one run."},
    {"Norvek/PVGFLog.TXT", "The results log, below ~/.local/state (or $XDG_STATE_HOME)."},
    {"Norvek/PVGFDone.TXT", "Which files are finished with, by their contents, in the same folder."},
});

constexpr auto km_Environment = std::to_array<TermManualItem>({
    {"NO_COLOR", "If set, the progress panel has no colours."},
    {"TERM", "If it is dumb, there is no progress panel."},
    {"TMPDIR", "Where private copies are made, instead of /tmp."},
});

constexpr auto km_ExitStatus = std::to_array<TermManualItem>({
    {"0", "every file was made smaller or found unchanged"},
    {"1", "at least one file or name could not be handled; the others were"},
    {"2", "wrong usage; nothing was done"},
    {"3", "nothing was done: no file that was named is one to work on"},
    {"130", "cancelled by Ctrl-C, with every file whole"},
});

constexpr auto km_Examples = std::to_array<TermManualItem>({
    {"parvigif banner.gif", "make one file smaller and keep banner.gif.BAK"},
    {"parvigif --no-backup pics/", "all GIF files of a folder, without backups"},
    {"parvigif 'pics/icon-*.gif'", "the files that match"},
    {"parvigif -nr pics", "report what could be saved in a whole tree"},
    {"parvigif -r -o web pics", "write the results to the tree web, leave pics alone"},
    {"parvigif - <in.gif >out.gif", "as part of a pipeline"},
});

constexpr auto km_Sections = std::to_array<TermManualSection>({
    {"On a terminal",
     "A few lines below the results show the progress of the run. p pauses it, even in the middle of a "
     "file, and any key resumes it. Ctrl-Z suspends it until fg. After Ctrl-C the current file is finished "
     "or "
     "left as it was; a second Ctrl-C ends the run at once, and every file is still whole.",
     {}},
    {"Files", nullptr, km_Files},
    {"Environment", nullptr, km_Environment},
    {"Exit status", nullptr, km_ExitStatus, true},
    {"Examples", nullptr, km_Examples, true},
});

} // namespace

const char* TermGetSynopsis() {
    return "parvigif [OPTION]... NAME...";
}

const char* TermGetNames() {
    return "A NAME is a GIF file, a folder, a quoted pattern with * and ?, or - for standard input to "
           "standard "
           "output. Each original is kept as NAME.BAK.";
}

const char* TermGetPurpose() {
    return "Make GIF files smaller, in place.";
}

std::span<const char* const> TermGetIntroduction() {
    return km_Introduction;
}

std::span<const TermManualSection> TermGetManualSections() {
    return km_Sections;
}
