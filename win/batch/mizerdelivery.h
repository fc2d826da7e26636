#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "wnatom/wnsystem.h"

/** Where the results of a batch go when they do not take the places of their originals. The optimizer then
 *  works on a private copy of each file, and the original is only read. */
class MizerDelivery {
public:
    virtual ~MizerDelivery() = default;

    /** Whether an error is about the place for a result; else it is about the original. */
    virtual bool HasPlaces() const = 0;

    /** Called before the work on a file.
     *  @return              whether there is any to do; else the result is there already
     *  @throws NvErrorCode  why its result could not be delivered */
    virtual bool Prepare(const char* inPath) = 0;

    /** @param inSmallerPath  the smaller file; null when it could not be made smaller
     *  @return               the path that the result has now, empty when it has none
     *  @throws NvErrorCode   why it could not be delivered; nothing incomplete stands anywhere then */
    virtual std::string Deliver(const char* inPath, const char* inSmallerPath) = 0;
};

/** A trial: nothing goes anywhere, but what would keep a real run from replacing the file is raised. */
class MizerDryRun : public MizerDelivery {
public:
    bool HasPlaces() const override { return false; }
    bool Prepare(const char* /*inPath*/) override { return true; }
    std::string Deliver(const char* inPath, const char* inSmallerPath) override;
};

/** A folder that is given every file, smaller where possible; or a single file of any name. */
class MizerOutputFolder : public MizerDelivery {
public:
    /** What may become of a file that stands where a result goes. It is replaced only as it was when the work
     *  on that result began. */
    enum class Present {
        km_Stays,
        km_Updated,  ///< replaced when it is older than the original
        km_Replaced, ///< whatever it is
    };

    /** Made when the first file goes there.
     *  @param inKeepsTimes  whether results have the modification times of their originals */
    explicit MizerOutputFolder(const std::string& inFolder, Present inPresent = Present::km_Stays,
                               bool inKeepsTimes = false);

    /** Every file is planned before the batch begins.
     *  @param inPlace  its path below the folder
     *  @return         the file that was planned for that place before, or empty when it was free */
    std::string Plan(const std::string& inPath, const std::string& inPlace);

    /** The same for a result that goes to a path of its own. */
    void PlanAs(const std::string& inPath, const std::string& inTarget) { mTargets[inPath] = inTarget; }

    bool HasPlaces() const override { return true; }

    /** Where a planned file goes. */
    const std::string& GetTarget(const std::string& inPath) const { return mTargets.at(inPath); }

    /** @throws NvErrorCode 31 when something stands at its place that may not be replaced */
    bool Prepare(const char* inPath) override;
    std::string Deliver(const char* inPath, const char* inSmallerPath) override;

private:
    std::string mFolder; // ends in a separator
    Present mPresent;
    bool mKeepsTimes;
    std::map<std::string, std::string> mPathsByPlace;
    std::map<std::string, std::string> mTargets; // by path
    std::set<std::string> mCleanedFolders;       // of what killed runs left
    std::optional<WnFileState> mFound;           // where the result of the file in hand goes
};
