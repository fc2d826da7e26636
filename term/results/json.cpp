#include "term/results/json.h"

#include <array>
#include <cstdio>

#include "term/options/help.h"
#include "term/text/utf8.h"

namespace {

// Grows when a field goes or gets another meaning; new fields may come without that.
constexpr std::uint64_t km_Schema = 1;

std::string Format(const char* inFormat, double inNumber) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), inFormat, inNumber);
    return text.data();
}

std::string Percentage(std::uint64_t inPart, std::uint64_t inWhole) {
    return Format("%.2f",
                  inWhole == 0 ? 0.0 : static_cast<double>(inPart) * 100.0 / static_cast<double>(inWhole));
}

class Object {
public:
    explicit Object(const char* inType) { Add("type", TermJsonString(inType)); }

    /** @param inValue  as JSON writes it; empty stands for null */
    void Add(const char* inName, const std::string& inValue) {
        mText +=
            (mText.empty() ? "{" : ",") + TermJsonString(inName) + ":" + (inValue.empty() ? "null" : inValue);
    }
    void Add(const char* inName, std::uint64_t inNumber) { Add(inName, std::to_string(inNumber)); }

    /** A path, and where it is no UTF-8 its very bytes in another field. */
    void AddPath(const std::string& inName, const std::string& inPath) {
        Add(inName.c_str(), inPath.empty() ? "" : TermJsonString(inPath));
        if (!TermIsUtf8(inPath))
            Add((inName + "_base64").c_str(), TermJsonString(TermBase64(inPath)));
    }

    std::string Close() { return mText + "}\n"; }

private:
    std::string mText;
};

void AddSizes(Object& ioObject, std::uint64_t inBefore, std::uint64_t inAfter) {
    ioObject.Add("input_bytes", inBefore);
    ioObject.Add("output_bytes", inAfter);
    ioObject.Add("saved_bytes", inBefore - inAfter);
    ioObject.Add("saved_percent", Percentage(inBefore - inAfter, inBefore));
}

} // namespace

std::string TermJsonString(std::string_view inText) {
    std::string text = "\"";
    while (!inText.empty()) {
        const std::size_t length = TermUtf8Length(inText);
        const auto byte = static_cast<unsigned char>(inText.front());
        std::array<char, 8> escape{};
        if (length == 0)
            text += "\xef\xbf\xbd";
        else if (byte == '"' || byte == '\\')
            text += std::string("\\") + inText.front();
        else if (byte < 0x20 && std::snprintf(escape.data(), escape.size(), "\\u%04x", byte) > 0)
            text += escape.data();
        else
            text += inText.substr(0, length);
        inText.remove_prefix(length == 0 ? 1 : length);
    }
    return text + "\"";
}

const char* TermModeName(const TermSettings& inSettings) {
    if (inSettings.mIsDryRun)
        return "dry_run";
    if (inSettings.mTask == TermTask::km_Restore)
        return "restore";
    if (inSettings.IsFilter())
        return "filter";
    return inSettings.mOutputFolder.empty() ? "replace" : "output";
}

std::string TermJsonRun(const char* inMode) {
    std::string version = TermVersion();
    version.pop_back();
    Object object("run");
    object.Add("schema", km_Schema);
    object.Add("program", TermJsonString(version));
    object.Add("mode", TermJsonString(inMode));
    return object.Close();
}

std::string TermJsonFile(const MizerFileResult& inResult, bool inIsDryRun) {
    const std::string words = TermOutcomeWords(inResult);
    const bool isSmaller = inResult.mStatus == MizerStatus::km_Smaller;
    Object object("file");
    object.AddPath("path", inResult.mPath);
    object.Add("status", TermJsonString(TermStatusName(inResult.mStatus)));
    object.Add("dry_run", inIsDryRun ? "true" : "false");
    if (inResult.mOriginalSize != 0) {
        AddSizes(object, inResult.mOriginalSize, inResult.mNewSize);
    } else {
        for (const char* name : {"input_bytes", "output_bytes", "saved_bytes", "saved_percent"})
            object.Add(name, "");
    }
    object.Add("damaged", inResult.mDamage.empty() ? "false" : "true");
    object.Add("frames", inResult.mFrameCount == 0 ? "" : std::to_string(inResult.mFrameCount));
    object.Add("ssim", isSmaller ? Format("%.4f", inResult.mWorstLook.mSsim) : "");
    object.Add("max_difference", isSmaller ? std::to_string(inResult.mWorstLook.mMaxError) : "");
    object.AddPath("output", inResult.mOutputPath);
    object.AddPath("backup", inResult.mBackupPath);
    object.Add("error_code", inResult.mError ? std::to_string(inResult.mError->GetCode()) : "");
    object.Add("message", words.empty() ? "" : TermJsonString(words));
    return object.Close();
}

std::string TermJsonRestored(const TermRestored& inRestored) {
    const char* const done = inRestored.mIsDryRun ? "would_restore" : "restored";
    Object object("restore");
    object.AddPath("path", inRestored.mPath);
    object.Add("status", TermJsonString(inRestored.mMessage.empty() ? done : "failed"));
    object.AddPath("backup", inRestored.mBackup);
    object.AddPath("kept", inRestored.mKept);
    object.Add("error_code", inRestored.mErrorCode == 0 ? "" : std::to_string(inRestored.mErrorCode));
    object.Add("message", inRestored.mMessage.empty() ? "" : TermJsonString(inRestored.mMessage));
    return object.Close();
}

std::string TermJsonSummary(const TermCounts& inCounts) {
    Object object("summary");
    object.Add("smaller", inCounts.mSmaller);
    object.Add("unchanged", inCounts.mUnchanged);
    object.Add("skipped", inCounts.mSkipped);
    object.Add("failed", inCounts.mFailed);
    object.Add("cancelled", inCounts.mIsCancelled ? "true" : "false");
    object.Add("dry_run", inCounts.mIsDryRun ? "true" : "false");
    AddSizes(object, inCounts.mOriginalBytes, inCounts.mNewBytes);
    return object.Close();
}
