#pragma once

#include <cstdint>
#include <span>

/** Where a string resource was found. */
struct NvStringBlock {
    bool mIsFound = false;
    std::uint32_t mSize = 0;       ///< bytes of the block that holds the string; no text in it is longer
    std::int32_t mSystemError = 0; ///< the system's last error, 0 when there is none
};

/** A module that holds texts under numbers. NvString loads itself from one. */
class NvStringResources {
public:
    /** FindBlock's system error when memory ran out. */
    static constexpr std::int32_t km_NotEnoughMemory = 8;

    virtual ~NvStringResources() = default;

    virtual NvStringBlock FindBlock(std::uint32_t inStringID) const = 0;

    /** Copies the text to outText, cut so that it and its NUL fit into inSize bytes.
     *  @return  characters copied, 0 when there is no such text */
    virtual std::uint32_t LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const = 0;
};

/** Texts in memory, for platforms whose programs carry no string resources. */
class NvStringTable : public NvStringResources {
public:
    struct Entry {
        std::uint32_t mStringID;
        const char* mText;
    };

    /** @param inEntries  sorted by number; borrowed for the table's life */
    explicit NvStringTable(std::span<const Entry> inEntries) : mEntries(inEntries) {}

    /** Each text is a block of its own. */
    NvStringBlock FindBlock(std::uint32_t inStringID) const override;
    std::uint32_t LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const override;

private:
    const char* Find(std::uint32_t inStringID) const;

    std::span<const Entry> mEntries;
};
