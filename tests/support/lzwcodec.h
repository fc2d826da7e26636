#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/file/nvfile.h"
#include "nvcode2/file/nvfilereader.h"
#include "nvcode2/file/nvfilewriter.h"
#include "nvcode2/gif/nvinterlace.h"
#include "nvcode2/gif/nvlzwdecoder.h"
#include "nvcode2/gif/nvlzwencoder.h"
#include "tests/support/lzwreference.h"

/** A frame's shape in memory: rows lie mStride bytes apart. */
struct FrameShape {
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::uint32_t mStride;
    bool mInterlaced;

    std::size_t PixelCount() const { return std::size_t{mWidth} * mHeight; }
};

/** Calls inVisit(start row, number of rows, row step) for every pass over a frame. */
template <typename Visitor>
void ForEachPass(const FrameShape& inShape, Visitor inVisit) {
    if (!inShape.mInterlaced) {
        inVisit(0U, inShape.mHeight, 1U);
        return;
    }
    for (const NvInterlacePass& pass : km_InterlacePasses)
        inVisit(pass.mStart, pass.CountRows(inShape.mHeight), pass.mStep);
}

/** The pixels of a frame in memory, in the order in which a file stores them. */
inline Indices InFileOrder(const Indices& inPixels, const FrameShape& inShape) {
    Indices ordered;
    NvForEachRowInFileOrder(inShape.mHeight, inShape.mInterlaced, [&](std::uint32_t inRow) {
        const auto row = inPixels.begin() + std::ptrdiff_t{inRow} * inShape.mStride;
        ordered.insert(ordered.end(), row, row + inShape.mWidth);
    });
    return ordered;
}

/** The library's codec between memory and memory, by way of a file as it works in the program. The same
 *  encoder and decoder serve all calls, so that what one stream leaves behind would show in the next. */
class LZWCodec {
public:
    /** @param inPath  of a file that is made for this, or emptied */
    explicit LZWCodec(const std::string& inPath) : mFile(inPath.c_str()) {
        mFile.Create();
        mFile.Open(NvFile::km_ReadPerm | NvFile::km_WritePerm);
    }

    std::string Encode(std::uint8_t inMinimumCodeSize, const Indices& inPixels, const FrameShape& inShape,
                       const NvLZWStrings* inStrings = nullptr) {
        Rewind();
        mEncoder.Begin(inMinimumCodeSize, inStrings);
        ForEachPass(inShape, [&](std::uint32_t inStart, std::uint32_t inRows, std::uint32_t inStep) {
            mEncoder.EncodeRows(inPixels.data() + std::size_t{inStart} * inShape.mStride, inShape.mWidth,
                                inRows, inShape.mStride * inStep);
        });
        mEncoder.End();
        mWriter.Flush();
        std::string bytes(mFile.GetLength(), '\0');
        mReader.Seek(0);
        mReader.Read(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return bytes;
    }

    /** @return  the pixels in file order, as the reference gives them
     *  @throws std::logic_error  when bytes beside the frame's rows were written */
    LZWDecoded Decode(const std::string& inStream, const FrameShape& inShape) {
        Rewind();
        mFile.Write(inStream.data(), static_cast<std::uint32_t>(inStream.size()));
        mReader.Seek(0);
        Indices rows(std::size_t{inShape.mStride} * inShape.mHeight, km_Untouched);
        LZWDecoded result;
        std::uint64_t delivered = 0;
        try {
            mDecoder.Begin();
            ForEachPass(inShape, [&](std::uint32_t inStart, std::uint32_t inRows, std::uint32_t inStep) {
                if (inRows > 0)
                    delivered += mDecoder.DecodeRows(rows.data() + std::size_t{inStart} * inShape.mStride,
                                                     inShape.mWidth, inRows, inShape.mStride * inStep);
            });
            mDecoder.End();
            result.mIsUndefined = mDecoder.MetUndefinedCode();
            result.mRunsOver = delivered == inShape.PixelCount() && mDecoder.RunsOver();
        } catch (const NvErrorCode& error) {
            result.mError = error.GetCode();
        }
        result.mPixels = InFileOrder(rows, inShape);
        for (std::uint32_t y = 0; y < inShape.mHeight; ++y)
            for (std::uint32_t x = inShape.mWidth; x < inShape.mStride; ++x)
                if (rows[y * inShape.mStride + x] != km_Untouched)
                    throw std::logic_error("bytes beside a row were written");
        if (result.mError == 0)
            result.mPixels.resize(delivered);
        return result;
    }

private:
    static constexpr std::uint8_t km_Untouched = 0xA5;

    void Rewind() {
        mReader.Reset();
        mFile.SetLength(0);
        mFile.Seek(NvFile::km_FromStart, 0);
    }

    NvFile mFile;
    NvFileWriter mWriter{mFile};
    NvFileReader mReader{mFile};
    LZWEncoder mEncoder{mWriter};
    LZWDecoder mDecoder{mReader};
};
