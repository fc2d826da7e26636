#include "term/options/values.h"

#include <cctype>
#include <charconv>
#include <string_view>

namespace {

/** @return what follows the number; null when there is none */
const char* ReadDecimal(std::string_view inText, double& outNumber) {
    const auto [stop, error] =
        std::from_chars(inText.data(), inText.data() + inText.size(), outNumber, std::chars_format::fixed);
    return error == std::errc() && outNumber >= 0 ? stop : nullptr;
}

/** Bytes of a unit; 0 when there is none of that name. */
std::uint64_t FindUnit(std::string_view inName) {
    if (inName.size() > 1 && (inName.substr(1) == "B" || inName.substr(1) == "iB"))
        inName = inName.substr(0, 1);
    if (inName == "B")
        return 1;
    const std::size_t power = std::string_view("kmg").find(
        static_cast<char>(inName.size() == 1 ? std::tolower(static_cast<unsigned char>(inName[0])) : 0));
    return power == std::string_view::npos ? 0 : std::uint64_t{1024} << (10 * power);
}

} // namespace

bool TermReadNumber(const std::string& inText, std::uint32_t inLeast, std::uint32_t inMost,
                    std::uint32_t& outNumber) {
    const char* end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, outNumber);
    return error == std::errc() && stop == end && inLeast <= outNumber && outNumber <= inMost;
}

bool TermReadSize(const std::string& inText, std::uint64_t inUnit, std::uint64_t& outBytes) {
    double number = 0;
    const char* const stop = ReadDecimal(inText, number);
    if (!stop)
        return false;
    const std::string_view name(stop, static_cast<std::size_t>(inText.data() + inText.size() - stop));
    const std::uint64_t unit = name.empty() ? inUnit : FindUnit(name);
    const double bytes = number * static_cast<double>(unit);
    if (unit == 0 || bytes > 1e15)
        return false;
    outBytes = static_cast<std::uint64_t>(bytes);
    return true;
}

bool TermReadPercentage(const std::string& inText, double& outPercentage) {
    double number = 0;
    const char* const stop = ReadDecimal(inText, number);
    if (!stop || std::string_view(stop) != "%" || number > 100)
        return false;
    outPercentage = number;
    return true;
}
