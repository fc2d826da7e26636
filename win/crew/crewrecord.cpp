#include "win/crew/crewrecord.h"

#include <bit>
#include <type_traits>

namespace {

constexpr unsigned char km_Version = 1;
constexpr std::size_t km_HeaderSize = 6; // version, kind, length
constexpr std::uint32_t km_LongestBody = 1 << 20;

/** Appends values to a body. */
class Writer {
public:
    template <typename... Values>
    void operator()(const Values&... inValues) {
        (Put(inValues), ...);
    }
    const std::string& GetBytes() const { return mBytes; }

private:
    void Put(std::uint64_t inNumber) {
        for (int shift = 0; shift < 64; shift += 8)
            mBytes += static_cast<char>(inNumber >> shift);
    }
    void Put(double inNumber) { Put(std::bit_cast<std::uint64_t>(inNumber)); }
    void Put(const std::string& inText) {
        Put(std::uint64_t{inText.size()});
        mBytes += inText;
    }
    template <typename Number>
    requires std::is_integral_v<Number> || std::is_enum_v<Number>
    void Put(Number inNumber) { Put(static_cast<std::uint64_t>(inNumber)); }
    void Put(const std::optional<NvErrorCode>& inError) {
        Put(inError.has_value());
        if (!inError)
            return;
        Put(inError->GetCode());
        Put(inError->GetSystemError());
        Put(std::string(reinterpret_cast<const char*>(inError->GetFileName()) + 1, *inError->GetFileName()));
        Put(inError->GetLine());
    }

    std::string mBytes;
};

/** Takes them from it in the same order. */
class Reader {
public:
    explicit Reader(const std::string& inBytes) : mBytes(inBytes) {}

    template <typename... Values>
    void operator()(Values&... outValues) {
        (Get(outValues), ...);
    }

    /** Whether all of the body was there, and no more. */
    bool IsSound() const { return mIsSound && mAt == mBytes.size(); }

private:
    bool Has(std::uint64_t inCount) {
        mIsSound = mIsSound && inCount <= mBytes.size() - mAt;
        return mIsSound;
    }
    void Get(std::uint64_t& outNumber) {
        outNumber = 0;
        for (int shift = 0; shift < 64 && Has(1); shift += 8)
            outNumber |= std::uint64_t{static_cast<unsigned char>(mBytes[mAt++])} << shift;
    }
    void Get(double& outNumber) {
        std::uint64_t bits = 0;
        Get(bits);
        outNumber = std::bit_cast<double>(bits);
    }
    void Get(std::string& outText) {
        std::uint64_t size = 0;
        Get(size);
        if (!Has(size))
            return;
        outText = mBytes.substr(mAt, size);
        mAt += size;
    }
    template <typename Number>
    requires std::is_integral_v<Number> || std::is_enum_v<Number>
    void Get(Number& outNumber) {
        std::uint64_t number = 0;
        Get(number);
        outNumber = static_cast<Number>(number);
    }
    void Get(std::optional<NvErrorCode>& outError) {
        bool isThere = false;
        std::uint32_t code = 0, line = 0;
        std::int32_t systemError = 0;
        std::string fileName;
        Get(isThere);
        if (!isThere)
            return;
        (*this)(code, systemError, fileName, line);
        outError.emplace(code, systemError, fileName.c_str(), line);
    }

    const std::string& mBytes;
    std::size_t mAt = 0;
    bool mIsSound = true;
};

// Every field is named here, in both directions alike: one that is new does not compile until it is.

template <typename Archive, typename Body>
requires std::is_same_v<std::remove_const_t<Body>, CrewJob>
void Visit(Archive& ioArchive, Body& ioJob) {
    auto& [path, place] = ioJob;
    ioArchive(path, place);
}

template <typename Archive, typename Body>
requires std::is_same_v<std::remove_const_t<Body>, CrewProgress>
void Visit(Archive& ioArchive, Body& ioProgress) {
    ioArchive(ioProgress.mFraction);
}

template <typename Archive, typename Body>
requires std::is_same_v<std::remove_const_t<Body>, CrewResultMade>
void Visit(Archive& ioArchive, Body& ioMade) {
    ioArchive(ioMade.mResultPath);
}

template <typename Archive, typename Body>
requires std::is_same_v<std::remove_const_t<Body>, CrewMessage>
void Visit(Archive& ioArchive, Body& ioMessage) {
    auto& [text, caption, isStop] = ioMessage;
    ioArchive(text, caption, isStop);
}

template <typename Archive, typename Body>
requires std::is_same_v<std::remove_const_t<Body>, MizerFileResult>
void Visit(Archive& ioArchive, Body& ioResult) {
    auto& [path, status, reason, particulars, error, originalSize, newSize, outputPath, backupPath, damage,
           frameCount, look] = ioResult;
    ioArchive(path, status, reason, particulars, error, originalSize, newSize, outputPath, backupPath, damage,
              frameCount);
    auto& [ssim, contrastSsim, contrastWindows, psnr, maxError] = look;
    ioArchive(ssim, contrastSsim, contrastWindows, psnr, maxError);
}

std::string PackBody(CrewRecord::Kind inKind, const std::string& inBody) {
    std::string bytes = {static_cast<char>(km_Version), static_cast<char>(inKind)};
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(inBody.size() >> shift);
    return bytes + inBody;
}

} // namespace

std::string CrewPack(CrewRecord::Kind inKind) {
    return PackBody(inKind, {});
}

template <typename Body>
std::string CrewPack(CrewRecord::Kind inKind, const Body& inBody) {
    Writer writer;
    Visit(writer, inBody);
    return PackBody(inKind, writer.GetBytes());
}

template <typename Body>
bool CrewUnpack(const CrewRecord& inRecord, Body& outBody) {
    Reader reader(inRecord.mBody);
    Visit(reader, outBody);
    return reader.IsSound();
}

template std::string CrewPack(CrewRecord::Kind, const CrewJob&);
template std::string CrewPack(CrewRecord::Kind, const CrewProgress&);
template std::string CrewPack(CrewRecord::Kind, const CrewResultMade&);
template std::string CrewPack(CrewRecord::Kind, const CrewMessage&);
template std::string CrewPack(CrewRecord::Kind, const MizerFileResult&);
template bool CrewUnpack(const CrewRecord&, CrewJob&);
template bool CrewUnpack(const CrewRecord&, CrewProgress&);
template bool CrewUnpack(const CrewRecord&, CrewResultMade&);
template bool CrewUnpack(const CrewRecord&, CrewMessage&);
template bool CrewUnpack(const CrewRecord&, MizerFileResult&);

std::optional<CrewRecord> CrewInput::Take() {
    if (mBytes.size() < km_HeaderSize)
        return std::nullopt;
    std::uint32_t length = 0;
    for (std::size_t i = 0; i < 4; ++i)
        length |= std::uint32_t{static_cast<unsigned char>(mBytes[2 + i])} << 8 * i;
    mIsBroken = static_cast<unsigned char>(mBytes[0]) != km_Version || length > km_LongestBody;
    if (mIsBroken || mBytes.size() < km_HeaderSize + length)
        return std::nullopt;
    CrewRecord record = {static_cast<CrewRecord::Kind>(mBytes[1]), mBytes.substr(km_HeaderSize, length)};
    mBytes.erase(0, km_HeaderSize + length);
    return record;
}
