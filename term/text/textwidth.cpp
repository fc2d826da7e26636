#include "term/text/textwidth.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "term/text/utf8.h"

namespace {

struct Range {
    std::uint32_t mFirst, mLast;
};

// From the Unicode character database: general categories Mn and Me (the common blocks), and zero-width
// characters.
constexpr auto km_ZeroWidth = std::to_array<Range>({
    {0x0300, 0x036f}, {0x0483, 0x0489}, {0x0591, 0x05bd}, {0x0610, 0x061a},   {0x064b, 0x065f},
    {0x0670, 0x0670}, {0x06d6, 0x06dc}, {0x0900, 0x0902}, {0x093c, 0x093c},   {0x0941, 0x0948},
    {0x0e31, 0x0e31}, {0x0e34, 0x0e3a}, {0x0e47, 0x0e4e}, {0x1ab0, 0x1aff},   {0x1dc0, 0x1dff},
    {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2064}, {0x20d0, 0x20f0},   {0x302a, 0x302d},
    {0x3099, 0x309a}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}, {0xe0100, 0xe01ef},
});

// From the same: East Asian width W and F, and characters shown as emoji.
constexpr auto km_Wide = std::to_array<Range>({
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},   {0x25fd, 0x25fe},
    {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26a1, 0x26a1},   {0x26bd, 0x26be},   {0x26c4, 0x26c5},
    {0x2705, 0x2705},   {0x270a, 0x270b},   {0x2728, 0x2728},   {0x274c, 0x274c},   {0x2753, 0x2755},
    {0x2795, 0x2797},   {0x2b1b, 0x2b1c},   {0x2b50, 0x2b50},   {0x2e80, 0x303e},   {0x3041, 0x33ff},
    {0x3400, 0x4dbf},   {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f},   {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},
    {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a}, {0x1f200, 0x1f2ff}, {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff},
    {0x1f7e0, 0x1f7eb}, {0x1f900, 0x1f9ff}, {0x1fa70, 0x1faff}, {0x20000, 0x3fffd},
});

template <std::size_t Count>
bool IsIn(const std::array<Range, Count>& inRanges, std::uint32_t inCharacter) {
    return std::any_of(inRanges.begin(), inRanges.end(), [&](const Range& range) {
        return range.mFirst <= inCharacter && inCharacter <= range.mLast;
    });
}

/** The number of a character of well-formed UTF-8. */
std::uint32_t Decode(std::string_view inCharacter) {
    constexpr std::array<std::uint32_t, 5> leadBits = {0, 0x7f, 0x1f, 0x0f, 0x07};
    std::uint32_t number = static_cast<unsigned char>(inCharacter.front()) & leadBits[inCharacter.size()];
    for (const char byte : inCharacter.substr(1))
        number = number << 6 | (static_cast<unsigned char>(byte) & 0x3f);
    return number;
}

std::size_t WidthOf(std::string_view inCharacter) {
    const std::uint32_t number = Decode(inCharacter);
    if (IsIn(km_ZeroWidth, number))
        return 0;
    return IsIn(km_Wide, number) ? 2 : 1;
}

/** The characters of a text, each with its width; what is no UTF-8 byte by byte as "?". */
struct Character {
    std::string_view mBytes;
    std::size_t mWidth;
};

std::vector<Character> Split(std::string_view inText) {
    std::vector<Character> characters;
    while (!inText.empty()) {
        const std::size_t length = TermUtf8Length(inText);
        const std::string_view bytes = inText.substr(0, length);
        characters.push_back(length == 0 ? Character{"?", 1} : Character{bytes, WidthOf(bytes)});
        inText.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return characters;
}

} // namespace

std::size_t TermTextWidth(std::string_view inText) {
    std::size_t width = 0;
    for (const Character& character : Split(inText))
        width += character.mWidth;
    return width;
}

std::string TermShortened(std::string_view inText, std::size_t inColumns, std::string_view inEllipsis) {
    const std::vector<Character> characters = Split(inText);
    std::size_t width = 0;
    for (const Character& character : characters)
        width += character.mWidth;
    const bool fits = width <= inColumns;
    const std::size_t ellipsis = TermTextWidth(inEllipsis);
    if (!fits && inColumns < ellipsis)
        return std::string(inColumns, '.');
    auto first = characters.begin();
    for (; !fits && width > inColumns - ellipsis; ++first)
        width -= first->mWidth;
    while (!fits && first != characters.end() && first->mWidth == 0)
        ++first; // an accent whose letter is gone
    std::string text(fits ? std::string_view() : inEllipsis);
    for (; first != characters.end(); ++first)
        text += first->mBytes;
    return text;
}
