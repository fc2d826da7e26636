#include "term/inputs/outputplan.h"

#include <algorithm>
#include <filesystem>

#include "nvcode2/base/nverrorcode.h"
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

} // namespace

std::string TermPlanOutput(const std::string& inFolder, const TermInputs& inInputs, bool inIsRecursive,
                           MizerOutputFolder& ioOutput) {
    try {
        const WnFileKind kind = WnGetFileKind(inFolder.c_str());
        if (kind != WnFileKind::km_Missing && kind != WnFileKind::km_Folder)
            return "'--output' needs a folder, and '" + inFolder + "' is none";
    } catch (const NvErrorCode& error) {
        return "nothing can be written to '" + inFolder + "': " + MizerErrorWords(error);
    }
    const fs::path output = Canonical(inFolder);
    for (const std::string& folder : inInputs.mFolders) {
        if (IsSearched(output, Canonical(folder), inIsRecursive))
            return "the output folder '" + inFolder + "' lies in '" + folder +
                   "', whose files are to be read";
    }
    for (const TermInput& input : inInputs.mFiles) {
        if (!MizerIsNamedGIF(input.mPath.c_str()))
            continue;
        if (const std::string other = ioOutput.Plan(input.mPath, input.mPlace); !other.empty())
            return "'" + other + "' and '" + input.mPath + "' would become one file in '" + inFolder + "'";
    }
    return {};
}
