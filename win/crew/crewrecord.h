#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "win/batch/mizeroutcome.h"

/** What a run and its worker processes say to each other. A record is a version, a kind, the length of its
 *  body (4 bytes, low byte first), and the body. */
struct CrewRecord {
    enum class Kind : std::uint8_t {
        // to a worker
        km_Job, ///< the next file
        km_Cancel,
        km_Pause,
        km_Resume,
        km_GoOn, ///< answers km_BeforeReplace and km_ResultMade: the file may change now
        // from a worker
        km_Started,
        km_Progress,
        km_BeforeReplace,
        km_ResultMade,
        km_Message,
        km_Done,
    };

    Kind mKind;
    std::string mBody;
};

/** Bodies. */
struct CrewJob {
    std::string mPath;
    std::string mPlace; ///< below an output folder, if there is one
};
struct CrewProgress {
    double mFraction = 0;
};
struct CrewResultMade {
    std::string mResultPath;
};
struct CrewMessage {
    std::string mText, mCaption;
    bool mIsStop = false;
};

/** The bytes of a record, with a body of the types above or a MizerFileResult. */
std::string CrewPack(CrewRecord::Kind inKind);
template <typename Body>
std::string CrewPack(CrewRecord::Kind inKind, const Body& inBody);

/** @return false when the body is no such thing */
template <typename Body>
bool CrewUnpack(const CrewRecord& inRecord, Body& outBody);

/** Cuts what comes through a pipe into records. */
class CrewInput {
public:
    void Add(const std::string& inBytes) { mBytes += inBytes; }

    /** The next whole record, if it has come. */
    std::optional<CrewRecord> Take();

    /** Whether what has come is not of this version: nothing more can be read from there. */
    bool IsBroken() const { return mIsBroken; }

private:
    std::string mBytes;
    bool mIsBroken = false;
};
