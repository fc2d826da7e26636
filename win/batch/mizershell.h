#pragma once

#include <cstddef>
#include <cstdint>

#include "win/batch/mizeroutcome.h"

/** The seam between the batch and whatever shows it: a window, a terminal, a recorder in the tests.
 *  The batch driver never knows which. */

/** Controls of the progress panel by their resource identifiers. */
enum class MizerControl : std::uint16_t {
    km_Pause = 1007,
    km_Cancel = 1008,
    km_FileName = 1013,
    km_FileSize = 1015,
    km_FilesToDate = 1016,
    km_ThisFile = 1017,
    km_ThisBatch = 1018,
    km_ToDate = 1019,
    km_ThisFilePercent = 1020,
    km_ThisBatchPercent = 1022,
};

/** Hears what becomes of each file of a batch. */
class MizerListener {
public:
    virtual ~MizerListener() = default;

    /** Called when the work on a file begins, with its whole path, before the panel's texts about it. */
    virtual void FileStarted(const char* /*inPath*/) {}

    /** Called just before a file is first replaced, or would be were it not to stay: it still holds its
     *  original bytes. */
    virtual void BeforeReplace(const char* /*inPath*/) {}

    /** Called when a smaller file is complete, in its place or wherever else; it may be gone after the call.
     *  When several files are worked on at once, this and BeforeReplace come for one between those for
     * others.
     */
    virtual void ResultMade(const char* /*inPath*/, const char* /*inResultPath*/) {}

    /** Called once for each file that was taken from the queue, also before its error leaves the batch. */
    virtual void FileDone(const MizerFileResult& inResult) = 0;
};

/** What a program with a batch in it provides; a plain one only the functions without a body. */
class MizerShell : public MizerListener {
public:
    enum class Icon { km_None, km_Stop };

    /** Lets the user's pending commands through (between files). @return whether to stop */
    virtual bool PumpEvents() = 0;

    /** How far the file in hand is, from 0.0 to 1.0. A window may let messages through, as long as nothing
     *  re-enters the work on a file: what would start a batch adds to this one. @return whether to stop */
    virtual bool ShowProgress(double /*inFraction*/) { return false; }

    /** What else is in hand while that file is: how many others, and how many bytes of files are done that
     * are reported later, since that one comes before them. */
    virtual void ShowOthersInHand(std::size_t /*inCount*/, std::uint64_t /*inBytesDone*/) {}

    /** A text of the progress panel; does nothing where there is none. */
    virtual void SetPanelText(MizerControl /*inControl*/, const char* /*inText*/) {}

    /** Enables or disables Pause and Cancel, in the panel and in the menu. */
    virtual void EnableCommands(bool /*inEnable*/) {}

    /** A message that stays until the user has seen it. */
    virtual void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) = 0;

    /** Ends the program once the present command returns. */
    virtual void PostQuit() {}
};
