#include "term/inputs/outputplan.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "win/batch/filequeue.h"
#include "win/batch/mizeroutcome.h"
#include "wnatom/wnsystem.h"

namespace {

namespace fs = std::filesystem;

/** The path without links and dots, as far as it exists. */
fs::path Canonical(const std::string& inPath) {
    std::error_code ignored;
    const fs::path path = fs::weakly_canonical(fs::absolute(WnMakePath(inPath), ignored), ignored);
    return path.has_filename() ? path : path.parent_path();
}

/** Whether a run over inParent would find what lies in inFolder. */
bool IsSearched(const fs::path& inFolder, const fs::path& inParent, bool inIsRecursive) {
    if (!inIsRecursive)
        return inFolder == inParent;
    return std::mismatch(inParent.begin(), inParent.end(), inFolder.begin(), inFolder.end()).first ==
           inParent.end();
}

/** An output named like a picture is one, unless it is a folder already. */
bool IsOutputFile(const std::string& inOutput) {
    std::error_code ignored;
    return MizerIsNamedGIF(inOutput.c_str()) && !fs::is_directory(WnMakePath(inOutput), ignored);
}

/** No original may be in the way of a result, its own included. */
std::string FindOriginalInTheWay(const TermInputs& inInputs, const MizerOutputFolder& inOutput) {
    std::set<WnFileIdentity> originals;
    for (const TermInput& input : inInputs.mFiles)
        if (const auto identity = WnGetFileIdentity(input.mPath.c_str()))
            originals.insert(*identity);
    for (const TermInput& input : inInputs.mFiles) {
        if (!MizerIsNamedGIF(input.mPath.c_str()))
            continue;
        const std::string& target = inOutput.GetTarget(input.mPath);
        if (const auto identity = WnGetFileIdentity(target.c_str());
            identity && originals.contains(*identity))
            return "'" + target + "' is one of the files to be read";
    }
    return {};
}

} // namespace

std::string TermPlanOutput(const std::string& inOutput, const TermInputs& inInputs, bool inIsRecursive,
                           MizerOutputFolder& ioOutput) {
    const bool isFile = IsOutputFile(inOutput);
    const WnFileKind kind = WnGetFileKind(inOutput.c_str());
    if (!isFile && kind != WnFileKind::km_Missing && kind != WnFileKind::km_Folder)
        return "'--output' needs a folder, and '" + inOutput + "' is none";
    if (isFile && (inInputs.mFiles.size() > 1 || !inInputs.mFolders.empty()))
        return "'" + inOutput + "' is the name of one file: for several results, name a folder";
    const fs::path output = Canonical(inOutput);
    for (const std::string& folder : inInputs.mFolders) {
        if (IsSearched(output, Canonical(folder), inIsRecursive))
            return "the output folder '" + inOutput + "' lies in '" + folder +
                   "', whose files are to be read";
    }
    for (const TermInput& input : inInputs.mFiles) {
        if (!MizerIsNamedGIF(input.mPath.c_str()))
            continue;
        if (isFile)
            ioOutput.PlanAs(input.mPath, inOutput);
        else if (const std::string other = ioOutput.Plan(input.mPath, input.mPlace); !other.empty())
            return "'" + other + "' and '" + input.mPath + "' would become one file in '" + inOutput + "'";
    }
    return FindOriginalInTheWay(inInputs, ioOutput);
}
