#include "term/report/reporttext.h"

#include <array>
#include <chrono>
#include <cstdio>

#include "term/options/help.h"
#include "term/report/reportpage.h"
#include "term/text/messages.h"
#include "term/text/utf8.h"

namespace {

/** "14,937" */
std::string Grouped(std::uint64_t inNumber) {
    const std::string digits = std::to_string(inNumber);
    std::string text;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i != 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

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

/** A cell of the table. Without a value it is empty, and sorted last. */
std::string Cell(const char* inAttributes, const std::string& inValue, const std::string& inContent) {
    return std::string("<td role=\"cell\" ") + inAttributes +
           (inValue.empty() ? ">" : " data-value=\"" + inValue + "\">") + inContent + "</td>\n";
}

std::string SizeCell(const char* inLabel, std::uint64_t inBytes, bool inIsKnown) {
    const std::string attributes = std::string("class=\"number\" data-label=\"") + inLabel + "\"";
    return Cell(attributes.c_str(), inIsKnown ? std::to_string(inBytes) : "",
                inIsKnown ? Grouped(inBytes) : "");
}

/** How much was saved, and the old size as a bar above the new one. */
std::string PartCell(const MizerFileResult& inResult) {
    const double saved =
        100.0 * static_cast<double>(inResult.GetSaved()) / static_cast<double>(inResult.mOriginalSize);
    const std::string bars =
        R"(<svg class="bar" viewBox="0 0 100 5" preserveAspectRatio="none" aria-hidden="true">)"
        R"(<rect class="old" width="100" height="2"/><rect class="new" y="3" width=")" +
        Format("%.2f", 100.0 - saved) + R"(" height="2"/></svg>)";
    return Cell("class=\"part\"", Format("%.4f", saved), Format("%.1f", saved) + " %" + bars);
}

std::string Count(std::uint64_t inCount, const char* inOne, const char* inMany) {
    return Grouped(inCount) + " " + (inCount == 1 ? inOne : inMany);
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
                       Grouped(inCounts.mOriginalBytes) + "</strong> bytes before, <strong>" +
                       Grouped(inCounts.mNewBytes) + "</strong> after: <strong>" +
                       Grouped(inCounts.GetSaved()) + "</strong> saved<br>\n" +
                       Count(inCounts.mSmaller + inCounts.mUnchanged, "file", "files") + ", " +
                       Grouped(inCounts.mSmaller) + " made smaller";
    if (inCounts.mFailed != 0)
        text += "; <span class=\"trouble\">" + Grouped(inCounts.mFailed) + " failed</span>";
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

std::string TermReportRow(const MizerFileResult& inResult, const std::string& inWords) {
    const bool isSmaller = inResult.mStatus == MizerStatus::km_Smaller;
    const bool isMeasured = inResult.mOriginalSize != 0;
    const bool isDone = isSmaller || inResult.mStatus == MizerStatus::km_Unchanged;
    const std::string status = TermStatusName(inResult.mStatus);
    std::string text = "<tbody role=\"rowgroup\" class=\"" + status +
                       "\">\n<tr role=\"row\">\n<th role=\"rowheader\" scope=\"row\"><bdi>" +
                       TermHtmlText(inResult.mPath) + "</bdi>";
    if (!inWords.empty())
        text += "<small>" + TermHtmlText(inWords) + "</small>";
    text += "</th>\n" + SizeCell("Before", inResult.mOriginalSize, isMeasured) +
            SizeCell("After", inResult.mNewSize, isDone) + SizeCell("Saved", inResult.GetSaved(), isDone);
    text += isDone ? PartCell(inResult) : Cell("class=\"part\"", "", "");
    const std::string similarity = isSmaller ? Format("%.3f", inResult.mWorstLook.mSsim) : "";
    text += Cell("class=\"number\" data-label=\"Similarity\"", similarity, similarity);
    return text + Cell("class=\"outcome\"", "", status) + "</tr>\n";
}
