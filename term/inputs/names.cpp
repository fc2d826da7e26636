#include "term/inputs/names.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "term/results/counts.h"
#include "term/system/interrupt.h"
#include "win/batch/filepattern.h"
#include "win/batch/mizeroutcome.h"
#include "wnatom/wnsystem.h"

namespace {

/** Lists of other systems may begin with a byte-order mark and end their lines in CR LF. */
std::string Unmarked(const std::string& inLine, bool inIsFirst) {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    std::string_view line = inLine;
    if (inIsFirst && line.starts_with(mark))
        line.remove_prefix(mark.size());
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return std::string(line);
}

/** The names in a file, or on standard input for "-". */
std::vector<std::string> ReadNames(const TermSettings& inSettings, TermMessages& ioMessages) {
    const std::string& path = inSettings.mNamesFile;
    const bool isStandardInput = path == "-";
    TermCatchInterrupts(true); // whoever waits for names that nobody types can stop at once
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(
        isStandardInput ? nullptr : std::fopen(path.c_str(), "r"), &std::fclose);
    std::FILE* const file = isStandardInput ? stdin : opened.get();
    const int end = inSettings.mNamesEndInNul ? '\0' : '\n';
    std::vector<std::string> names;
    std::string name;
    bool isFirst = true;
    const auto add = [&] {
        name = inSettings.mNamesEndInNul ? name : Unmarked(name, std::exchange(isFirst, false));
        if (!name.empty())
            names.push_back(std::exchange(name, {}));
    };
    for (int byte = 0; file && (byte = std::getc(file)) != EOF;) {
        if (byte == end)
            add();
        else
            name += static_cast<char>(byte);
    }
    TermCatchInterrupts();
    if (TermIsInterrupted())
        return {};
    add();
    if (!file || std::ferror(file))
        ioMessages.Error("list of names " + TermPrintable(path) + ": " + std::strerror(errno),
                         TermExit::km_Usage);
    const bool hasNul = std::any_of(names.begin(), names.end(), [](const std::string& inName) {
        return inName.find('\0') != std::string::npos;
    });
    if (!hasNul)
        return names;
    ioMessages.Error(TermPrintable(path) + ": the names in it end in NULs, which takes '--null'",
                     TermExit::km_Usage);
    return {};
}

class InputList {
public:
    InputList(const TermSettings& inSettings, TermMessages& ioMessages, MizerListener* inListener)
        : mSettings(inSettings), mMessages(ioMessages), mListener(inListener) {}

    void Add(const std::string& inName) {
        try {
            const bool isFolder = WnGetFileKind(inName.c_str()) == WnFileKind::km_Folder;
            mPlaceStart = isFolder ? WithSeparator(inName).size() : std::string::npos;
            if (isFolder)
                mInputs.mFolders.push_back(inName);
            if (isFolder && mSettings.mIsRecursive)
                ReportIfNoGIFs(inName, AddTree(WithSeparator(inName)));
            else
                AddOne(inName);
        } catch (const NvErrorCode& error) {
            ReportFailure(inName, error);
        }
    }

    TermInputs Take() {
        mInputs.mQueue = std::make_unique<FileQueue>();
        if (mSettings.mExcluded.empty()) {
            mInputs.mQueue->TakeOver(mQueue);
            return std::move(mInputs);
        }
        std::erase_if(mInputs.mFiles, [&](const TermInput& inInput) { return IsExcluded(inInput.mPlace); });
        for (const TermInput& input : mInputs.mFiles)
            mInputs.mQueue->AddFile(input.mPath.c_str());
        return std::move(mInputs);
    }

private:
    static std::string WithSeparator(const std::string& inFolder) {
        return WnIsSeparator(inFolder.back()) ? inFolder : inFolder + WnGetSeparator();
    }

    /** Whether any part of a path is named as one of the patterns has it. */
    bool IsExcluded(std::string_view inPlace) const {
        const auto end = std::find_if(inPlace.begin(), inPlace.end(), WnIsSeparator);
        const std::string_view part = inPlace.substr(0, static_cast<std::size_t>(end - inPlace.begin()));
        const bool isExcluded =
            std::any_of(mSettings.mExcluded.begin(), mSettings.mExcluded.end(),
                        [&](const std::string& inPattern) { return MizerMatchesPattern(part, inPattern); });
        return isExcluded || (end != inPlace.end() && IsExcluded(inPlace.substr(part.size() + 1)));
    }

    /** Whether a folder below a named one is entered. */
    bool IsEntered(const std::string& inName) const {
        return (mSettings.mEntersHidden || !inName.starts_with('.')) && !IsExcluded(inName);
    }

    void AddOne(const std::string& inName) {
        const FileQueue::Named named = mQueue.AddName(inName.c_str());
        if (named == FileQueue::Named::km_AlreadyQueued)
            mMessages.FileNote(inName, MizerReasonWords(MizerReason::km_NamedBefore));
        ReportIfNoGIFs(inName, named != FileQueue::Named::km_NoGIFs);
    }

    /** A folder's own files, then those below it. A subfolder that cannot be read is reported and left out.
     *  @return whether there was any GIF file */
    bool AddTree(const std::string& inFolder) {
        bool hasGIFs = mQueue.AddFolder(inFolder.c_str()) != 0;
        for (const std::string& name : WnListFolders(inFolder.c_str())) {
            if (TermIsInterrupted())
                break;
            if (!IsEntered(name))
                continue;
            const std::string folder = WithSeparator(inFolder + name);
            try {
                hasGIFs = AddTree(folder) || hasGIFs;
            } catch (const NvErrorCode& error) {
                ReportFailure(folder, error);
                hasGIFs = true; // it may hold some
            }
        }
        return hasGIFs;
    }

    void ReportIfNoGIFs(const std::string& inName, bool inHasGIFs) {
        if (!inHasGIFs)
            ReportFailure(inName, NvErrorCode(NvErrorCode::km_FileNotFound, __FILE__, __LINE__),
                          MizerReason::km_NoGIFs);
    }

    static bool HasPatternInFolder(const std::string& inName) {
        const auto end = std::find_if(inName.rbegin(), inName.rend(), WnIsSeparator).base();
        return std::any_of(inName.begin(), end,
                           [](char inLetter) { return inLetter == '*' || inLetter == '?'; });
    }

    void ReportFailure(const std::string& inName, const NvErrorCode& inError,
                       MizerReason inReason = MizerReason::km_Error) {
        MizerFileResult result;
        result.mPath = inName;
        result.Fail(inError, inReason);
        mMessages.FileError(inName, TermOutcomeWords(result) +
                                        (HasPatternInFolder(inName)
                                             ? "; patterns work on the names of files only, -r on whole trees"
                                             : ""));
        if (mListener)
            mListener->FileDone(result);
    }

    /** A file was queued. */
    void AddPlace(const std::string& inPath) {
        std::size_t start = mPlaceStart;
        if (start == std::string::npos) {
            for (start = inPath.size(); start > 0 && !WnIsSeparator(inPath[start - 1]);)
                --start;
        }
        mInputs.mFiles.push_back({inPath, inPath.substr(start)});
    }

    const TermSettings& mSettings;
    TermMessages& mMessages;
    MizerListener* mListener;
    FileQueue mQueue{[this](const std::string& path) { AddPlace(path); }};
    std::size_t mPlaceStart = 0;
    TermInputs mInputs;
};

} // namespace

std::string TermCheckNames(const TermSettings& inSettings) {
    const std::vector<std::string>& names = inSettings.mNames;
    if (names.size() != 2 || !inSettings.mOutputFolder.empty() ||
        names[1].find_first_of("*?") != std::string::npos)
        return {};
    try {
        if (WnGetFileKind(names[0].c_str()) != WnFileKind::km_RegularFile ||
            WnGetFileKind(names[1].c_str()) != WnFileKind::km_Missing)
            return {};
    } catch (const NvErrorCode&) {
        return {}; // it is reported when its turn comes
    }
    return "there is no '" + names[1] + "'; to write the result there: parvigif -o " + names[1] + " " +
           names[0];
}

TermInputs TermListInputs(const TermSettings& inSettings, TermMessages& ioMessages,
                          MizerListener* inListener) {
    InputList list(inSettings, ioMessages, inListener);
    for (const std::string& name : inSettings.mNames)
        list.Add(name);
    if (!inSettings.mNamesFile.empty()) {
        for (const std::string& name : ReadNames(inSettings, ioMessages))
            list.Add(name);
    }
    return list.Take();
}

TermPassedOver::TermPassedOver(const TermSettings& inSettings, TermMessages& ioMessages)
    : mMessages(ioMessages),
      mVerbose(inSettings.GetDetail() == TermDetail::km_Verbose),
      mTypedNames(inSettings.mNames.begin(), inSettings.mNames.end()) {}

void TermPassedOver::Report(const std::string& inPath, const std::string& inWords) {
    if (mVerbose || mTypedNames.contains(inPath))
        mMessages.FileNote(inPath, inWords);
}

void TermPassedOver::ReportInDetail(const std::string& inPath, const std::string& inWords) {
    if (mVerbose)
        mMessages.FileNote(inPath, inWords);
}
