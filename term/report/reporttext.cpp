#include "term/report/reporttext.h"

#include <array>
#include <chrono>
#include <cstdio>

#include "term/options/help.h"
#include "term/report/reportpage.h"
#include "term/text/messages.h"
#include "term/text/numbers.h"
#include "term/text/utf8.h"

namespace {

/** "14,937" */
std::string Format(const char* inFormat, double inNumber) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), inFormat, inNumber);
    return text.data();
}

std::string FromHexadecimal(std::string_view inDigits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < inDigits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(inDigits.substr(i, 2)), nullptr, 16));
    return bytes;
}

void Replace(std::string& ioText, std::string_view inWhat, const std::string& inBy) {
    ioText.replace(ioText.find(inWhat), inWhat.size(), inBy);
}

/** "2026-11-21 08:30 UTC" */
std::string Now() {
    const auto now = std::chrono::floor<std::chrono::minutes>(std::chrono::system_clock::now());
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(now - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d UTC", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()));
    return text.data();
}

bool IsSmaller(const MizerFileResult& inResult) {
    return inResult.mStatus == MizerStatus::km_Smaller;
}

bool IsDone(const MizerFileResult& inResult) {
    return IsSmaller(inResult) || inResult.mStatus == MizerStatus::km_Unchanged;
}

/** What a cell is sorted by, and shows. Without a value it is sorted last. */
struct Content {
    std::string mValue;
    std::string mHtml;
};

Content NumberOf(std::uint64_t inNumber, bool inIsKnown) {
    return inIsKnown ? Content{std::to_string(inNumber), TermGrouped(inNumber)} : Content{};
}

/** How much was saved, and the old size as a bar above the new one. */
Content PartOf(const MizerFileResult& inResult) {
    if (!IsDone(inResult))
        return {};
    const double saved =
        100.0 * static_cast<double>(inResult.GetSaved()) / static_cast<double>(inResult.mOriginalSize);
    const std::string bars =
        R"(<svg class="bar" viewBox="0 0 100 5" preserveAspectRatio="none" aria-hidden="true">)"
        R"(<rect class="old" width="100" height="2"/><rect class="new" y="3" width=")" +
        Format("%.2f", 100.0 - saved) + R"(" height="2"/></svg>)";
    return {Format("%.4f", saved), Format("%.1f", saved) + " %" + bars};
}

Content SimilarityOf(const MizerFileResult& inResult) {
    const std::string text = IsSmaller(inResult) ? Format("%.3f", inResult.mWorstLook.mSsim) : "";
    return {text, text};
}

struct Column {
    const char* mHeading;
    const char* mClass;
    bool mIsLabelled; ///< on a narrow screen, where there are no headings
    Content (*mMake)(const MizerFileResult& inResult);
};

/** All but the first, which is the file. */
constexpr auto km_Columns = std::to_array<Column>({
    {"Before", "number", true,
     [](const MizerFileResult& file) { return NumberOf(file.mOriginalSize, file.mOriginalSize != 0); }},
    {"After", "number", true,
     [](const MizerFileResult& file) { return NumberOf(file.mNewSize, IsDone(file)); }},
    {"Saved", "number", true,
     [](const MizerFileResult& file) { return NumberOf(file.GetSaved(), IsDone(file)); }},
    {"Part saved", "part", false, PartOf},
    {"Similarity", "number", true, SimilarityOf},
    {"Outcome", "outcome", false,
     [](const MizerFileResult& file) {
         return Content{"", TermStatusName(file.mStatus)};
     }},
});

std::string Cell(const Column& inColumn, const Content& inContent) {
    std::string attributes = std::string("class=\"") + inColumn.mClass + "\"";
    if (inColumn.mIsLabelled)
        attributes += std::string(" data-label=\"") + inColumn.mHeading + "\"";
    if (!inContent.mValue.empty())
        attributes += " data-value=\"" + inContent.mValue + "\"";
    return "<td role=\"cell\" " + attributes + ">" + inContent.mHtml + "</td>\n";
}

std::string Headings() {
    constexpr const char* begin = "<th role=\"columnheader\" scope=\"col\"";
    std::string text = std::string(begin) + ">File</th>\n";
    for (const Column& column : km_Columns)
        text += std::string(begin) + " class=\"" + column.mClass + "\">" + column.mHeading + "</th>\n";
    return text;
}

std::string Count(std::uint64_t inCount, const char* inOne, const char* inMany) {
    return TermGrouped(inCount) + " " + (inCount == 1 ? inOne : inMany);
}

} // namespace

std::string TermHtmlText(std::string_view inText) {
    std::string text;
    const std::string printable = TermPrintable(inText);
    for (std::string_view rest = printable; !rest.empty();) {
        const std::size_t length = TermUtf8Length(rest);
        std::array<char, 8> escape{};
        if (length == 0) {
            std::snprintf(escape.data(), escape.size(), "\\x%02x",
                          static_cast<unsigned>(static_cast<unsigned char>(rest.front())));
            text += escape.data();
        } else if (std::string_view("&<>\"'").find(rest.front()) != std::string_view::npos) {
            std::snprintf(escape.data(), escape.size(), "&#%d;", rest.front());
            text += escape.data();
        } else {
            text += rest.substr(0, length);
        }
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

TermReportFrame TermMakeReportFrame() {
    std::string page = km_TermReportPage;
    Replace(page, "{columns}", Headings());
    Replace(page, "{style-hash}", TermBase64(FromHexadecimal(km_TermReportStyleHash)));
    Replace(page, "{script-hash}", TermBase64(FromHexadecimal(km_TermReportScriptHash)));
    constexpr std::string_view totals = "{totals}";
    constexpr std::string_view files = "{files}";
    const std::size_t totalsAt = page.find(totals);
    const std::size_t filesAt = page.find(files);
    return {page.substr(0, totalsAt),
            page.substr(totalsAt + totals.size(), filesAt - totalsAt - totals.size()),
            page.substr(filesAt + files.size())};
}

std::string TermReportTotals(const TermCounts& inCounts, std::uint64_t inLeftOut, std::uint64_t inLimit) {
    std::string text = "<p class=\"share\">" + Format("%.1f", inCounts.GetPercentage()) +
                       "&#8239;% <small>saved</small></p>\n<p class=\"facts\"><strong>" +
                       TermGrouped(inCounts.mOriginalBytes) + "</strong> bytes before, <strong>" +
                       TermGrouped(inCounts.mNewBytes) + "</strong> after: <strong>" +
                       TermGrouped(inCounts.GetSaved()) + "</strong> saved<br>\n" + TermCountWords(inCounts);
    if (inCounts.mIsDryRun)
        text += "<br>\n<strong>A dry run: no file was changed.</strong>";
    if (inCounts.mIsCancelled)
        text += "; <span class=\"trouble\">the run was cancelled</span>";
    if (inLeftOut != 0)
        text += "<br>\nThe pictures of " + Count(inLeftOut, "file are", "files are") +
                " left out: with them the page would hold more than " + Count(inLimit >> 20, "MiB", "MiB") +
                " of pictures";
    std::string version = TermVersion();
    version.pop_back();
    return text + "<br>\n" + version + ", " + Now() + "</p>\n";
}

std::string TermReportRow(const MizerFileResult& inResult) {
    const std::string words = TermOutcomeWords(inResult);
    std::string text = std::string("<tbody role=\"rowgroup\" class=\"") + TermStatusName(inResult.mStatus) +
                       "\">\n<tr role=\"row\">\n<th role=\"rowheader\" scope=\"row\"><bdi>" +
                       TermHtmlText(inResult.mPath) + "</bdi>";
    if (!words.empty())
        text += "<small>" + TermHtmlText(words) + "</small>";
    text += "</th>\n";
    for (const Column& column : km_Columns)
        text += Cell(column, column.mMake(inResult));
    return text + "</tr>\n";
}

TermPicturesFrame TermMakePicturesFrame() {
    return {"<tr role=\"row\" class=\"pictures\" hidden><td role=\"cell\" colspan=\"" +
                std::to_string(km_Columns.size() + 1) + "\">\n",
            "</td></tr>\n"};
}
