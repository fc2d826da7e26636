#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "win/optimizer/base/pvframelook.h"

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

enum class MizerStatus {
    km_Smaller,
    km_Unchanged, ///< nothing smaller was found, or mGateReason tells why it was not kept
    km_Skipped,   ///< mSkip tells why
    km_Failed,    ///< mError tells why; the file is as it was
    km_Cancelled, ///< the file is as it was
};

enum class MizerSkip {
    km_None,
    km_Backup,
    km_NotNamedGIF,
    km_Empty,
    km_InUse, ///< another run works on it
    km_Done,  ///< an earlier run was through with it
};

/** What became of one file of the batch. */
struct MizerFileResult {
    std::string mPath;
    MizerStatus mStatus = MizerStatus::km_Unchanged;
    MizerSkip mSkip = MizerSkip::km_None;
    std::uint32_t mOriginalSize = 0; ///< bytes; 0 when it was not measured
    std::uint32_t mNewSize = 0;      ///< bytes
    std::optional<NvErrorCode> mError;
    bool mBackupFailed = false;   ///< mError is about the backup, not the file itself
    bool mDeliveryFailed = false; ///< mError is about the place that the result should have gone to
    std::string mGateReason;      ///< why a smaller file was not kept, see PvOutcome; or empty

    std::string mOutputPath; ///< where what became of it stands, its own path or elsewhere; or empty
    std::string mBackupPath; ///< where the original is kept, of a file made smaller; or empty

    std::uint32_t mFrameCount = 0;
    PvFrameLook mWorstLook; ///< of the displayed frame that changed most, when the file was made smaller

    std::uint32_t GetSaved() const { return mOriginalSize - mNewSize; }
};

class MizerShell {
public:
    enum class Icon { km_None, km_Stop };

    virtual ~MizerShell() = default;

    /** Lets the user's pending commands through (between files). @return whether cancel was asked. */
    virtual bool PumpEvents() = 0;

    /** Tells how far the file in hand is, from 0.0 to 1.0, and whether cancel was asked. A window may let
     *  messages through, as long as nothing re-enters the work on a file: what would start a batch adds to
     *  this one. */
    virtual bool ShowProgress(double inFraction) = 0;

    /** Whether there is a progress panel; SetPanelText is called only then. */
    virtual bool HasPanel() const = 0;
    virtual void SetPanelText(MizerControl inControl, const char* inText) = 0;

    /** Enables or disables Pause and Cancel, in the panel and in the menu. */
    virtual void EnableCommands(bool inEnable) = 0;

    /** A message that stays until the user has seen it. */
    virtual void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) = 0;

    /** Folder of the results log, without a closing separator. */
    virtual std::string GetDataFolder() = 0;

    /** Called when the work on a file begins, with its whole path, before the panel's texts about it. */
    virtual void FileStarted(const char* /*inPath*/) {}

    /** Called just before a file is first replaced, or would be were it not to stay: it still holds its
     *  original bytes. */
    virtual void BeforeReplace(const char* /*inPath*/) {}

    /** Called when a smaller file is complete, in its place or on its way to one; it may be gone after the
     *  call. */
    virtual void ResultMade(const char* /*inResultPath*/) {}

    /** Called once for each file that was taken from the queue, also before its error leaves the batch. */
    virtual void FileDone(const MizerFileResult& inResult) = 0;

    /** Ends the program once the present command returns. */
    virtual void PostQuit() = 0;
};
