#pragma once

#include <span>

/** What the help and the man page say beside the options. Texts are plain words without line breaks; the
 *  caller fills the lines. */

struct TermManualItem {
    const char* mTerm;
    const char* mText;
};

struct TermManualSection {
    const char* mHeading;
    const char* mProse; ///< a paragraph above the items, or null
    std::span<const TermManualItem> mItems;
    bool mIsInHelp = false; ///< else only on the man page
};

/** "parvigif [OPTION]... NAME..." */
const char* TermGetSynopsis();

/** What the program does, in one sentence. */
const char* TermGetPurpose();

/** What a NAME is, in short. */
const char* TermGetNames();

/** Paragraphs that precede the options on the man page. */
std::span<const char* const> TermGetIntroduction();

/** Sections that follow the options. */
std::span<const TermManualSection> TermGetManualSections();
