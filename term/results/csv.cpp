#include "term/results/csv.h"

#include "term/results/counts.h"

namespace {

/** In quotes where a comma, a quote or a line break would end it; bytes stay as they are. */
std::string Field(const std::string& inText) {
    if (inText.find_first_of(",\"\r\n") == std::string::npos)
        return inText;
    std::string text = "\"";
    for (const char letter : inText)
        text += letter == '"' ? "\"\"" : std::string(1, letter);
    return text + "\"";
}

} // namespace

std::string TermCsvHeading() {
    return "path,status,input_bytes,output_bytes,saved_bytes,output,backup,error_code,message\r\n";
}

std::string TermCsvFile(const MizerFileResult& inResult) {
    std::string line = Field(inResult.mPath) + "," + TermStatusName(inResult.mStatus);
    for (const std::uint32_t size : {inResult.mOriginalSize, inResult.mNewSize, inResult.GetSaved()})
        line += "," + (inResult.mOriginalSize == 0 ? "" : std::to_string(size));
    line += "," + Field(inResult.mOutputPath) + "," + Field(inResult.mBackupPath) + ",";
    if (inResult.mError)
        line += std::to_string(inResult.mError->GetCode());
    return line + "," + Field(TermOutcomeWords(inResult)) + "\r\n";
}
