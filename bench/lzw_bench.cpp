// The LZW codec beside giflib's, pixel for pixel on the same frames: drawn ones from memory, and whole files
// when PARVIGIF_BENCH_GIFS names a folder (on a RAM disk, or the disk is measured).

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <gif_lib.h>

#include "bench/pictures.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgiffile.h"

namespace {

constexpr std::uint32_t km_Width = 640;
constexpr std::uint32_t km_Height = 480;

void CountPixels(benchmark::State& ioState, std::uint64_t inPixelsPerRound) {
    ioState.counters["pixels/s"] =
        benchmark::Counter(static_cast<double>(inPixelsPerRound) * static_cast<double>(ioState.iterations()),
                           benchmark::Counter::kIsRate);
}

// ---- ours

NvGIFFrameInfo RecordOf(const NvIndexedImage& inImage) {
    NvGIFFrameInfo info;
    info.mWidth = static_cast<std::uint16_t>(inImage.GetWidth());
    info.mHeight = static_cast<std::uint16_t>(inImage.GetHeight());
    info.mHasLocalTable = 0;
    return info;
}

/** Writes frames that share a table as a GIF. inPerm may ask to count only. */
void WriteGIF(const NvFileLocator& inLocator, std::uint16_t inPerm,
              std::span<const NvIndexedImage> inImages) {
    NvGIFFile file;
    file.Open(inLocator, inPerm);
    file.SetScreenSize(km_Width, km_Height);
    file.SetNumberOfFrames(static_cast<std::uint32_t>(inImages.size()));
    auto global = NvGIFFile::CreateGlobalInfo();
    global->mHasGlobalTable = 1;
    global->mColorTable = inImages.front().GetColorTable();
    file.SetGlobalInfo(global);
    for (const NvIndexedImage& image : inImages)
        file.WriteFrame(image, RecordOf(image));
    file.Close();
}

std::uint64_t ReadGIF(const NvFileLocator& inLocator) {
    std::uint64_t pixels = 0;
    NvGIFFile file;
    file.Open(inLocator, NvFile::km_ReadPerm);
    NvIndexedImage image;
    for (std::uint32_t i = 0; i < file.GetNumberOfFrames(); ++i) {
        file.ReadFrame(i, image);
        pixels += std::uint64_t{image.GetWidth()} * image.GetHeight();
    }
    file.Close();
    return pixels;
}

// ---- giflib

struct MemoryStream {
    std::string mBytes;
    std::size_t mNext = 0;
};

int ReadFromMemory(GifFileType* inFile, GifByteType* outBytes, int inCount) {
    auto& stream = *static_cast<MemoryStream*>(inFile->UserData);
    const std::size_t count =
        std::min(static_cast<std::size_t>(inCount), stream.mBytes.size() - stream.mNext);
    std::memcpy(outBytes, stream.mBytes.data() + stream.mNext, count);
    stream.mNext += count;
    return static_cast<int>(count);
}

int CountOnly(GifFileType* inFile, const GifByteType* /*inBytes*/, int inCount) {
    *static_cast<std::uint64_t*>(inFile->UserData) += static_cast<std::uint64_t>(inCount);
    return inCount;
}

void Require(bool inSucceeded) {
    if (!inSucceeded)
        throw std::runtime_error("giflib failed");
}

/** Decodes every image of a GIF in the order in which the file stores its rows. */
std::uint64_t ReadWithGiflib(MemoryStream& ioStream, std::vector<GifByteType>& ioPixels) {
    ioStream.mNext = 0;
    std::uint64_t pixels = 0;
    GifFileType* file = DGifOpen(&ioStream, ReadFromMemory, nullptr);
    Require(file != nullptr);
    for (GifRecordType record = UNDEFINED_RECORD_TYPE; record != TERMINATE_RECORD_TYPE;) {
        Require(DGifGetRecordType(file, &record) == GIF_OK);
        if (record == EXTENSION_RECORD_TYPE) {
            int label = 0;
            GifByteType* block = nullptr;
            Require(DGifGetExtension(file, &label, &block) == GIF_OK);
            while (block)
                Require(DGifGetExtensionNext(file, &block) == GIF_OK);
        } else if (record == IMAGE_DESC_RECORD_TYPE) {
            Require(DGifGetImageDesc(file) == GIF_OK);
            const int count = file->Image.Width * file->Image.Height;
            ioPixels.resize(static_cast<std::size_t>(count));
            Require(DGifGetLine(file, ioPixels.data(), count) == GIF_OK);
            pixels += static_cast<std::uint64_t>(count);
        }
    }
    DGifCloseFile(file, nullptr);
    return pixels;
}

std::uint64_t WriteWithGiflib(std::span<const NvIndexedImage> inImages) {
    std::uint64_t written = 0;
    GifFileType* file = EGifOpen(&written, CountOnly, nullptr);
    Require(file != nullptr);
    const std::uint32_t colors = inImages.front().GetColorTable().GetSize();
    ColorMapObject* map = GifMakeMapObject(1 << NvColorTable::GetBitsNeeded(colors), nullptr);
    Require(EGifPutScreenDesc(file, km_Width, km_Height, 8, 0, map) == GIF_OK);
    for (const NvIndexedImage& image : inImages) {
        const auto width = static_cast<int>(image.GetWidth());
        const auto height = static_cast<int>(image.GetHeight());
        const NvConstPixelLock pixels(image);
        Require(EGifPutImageDesc(file, 0, 0, width, height, false, nullptr) == GIF_OK);
        // It masks stray bits of the pixels in place, which changes none of ours.
        Require(EGifPutLine(file, const_cast<GifByteType*>(pixels.Row(0)), width * height) == GIF_OK);
    }
    EGifCloseFile(file, nullptr);
    GifFreeMapObject(map);
    return written;
}

// ---- measurements

class TemporaryFile {
public:
    explicit TemporaryFile(const NvIndexedImage& inImage) : mLocator(Path().c_str()) {
        WriteGIF(mLocator, NvFile::km_WritePerm, {&inImage, 1});
    }
    ~TemporaryFile() { std::filesystem::remove(mLocator.GetPath()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const NvFileLocator& Locator() const { return mLocator; }

private:
    static std::string Path() {
        const std::filesystem::path memory = "/dev/shm";
        const auto folder = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
        return (folder / "parvigif-bench.gif").string();
    }

    NvFileLocator mLocator;
};

MemoryStream LoadFile(const std::string& inPath) {
    std::ifstream file(inPath, std::ios::binary);
    return {{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()}};
}

void DecodeOurs(benchmark::State& ioState, PictureKind inKind) {
    const TemporaryFile file(DrawPicture(inKind, km_Width, km_Height));
    std::uint64_t pixels = 0;
    for (auto _ : ioState)
        pixels = ReadGIF(file.Locator());
    CountPixels(ioState, pixels);
}

void DecodeGiflib(benchmark::State& ioState, PictureKind inKind) {
    const TemporaryFile file(DrawPicture(inKind, km_Width, km_Height));
    MemoryStream stream = LoadFile(file.Locator().GetPath());
    std::vector<GifByteType> buffer;
    std::uint64_t pixels = 0;
    for (auto _ : ioState)
        pixels = ReadWithGiflib(stream, buffer);
    CountPixels(ioState, pixels);
}

void EncodeOurs(benchmark::State& ioState, PictureKind inKind) {
    const NvIndexedImage image = DrawPicture(inKind, km_Width, km_Height);
    for (auto _ : ioState)
        WriteGIF(NvFileLocator(), NvFile::km_WritePerm | NvFile::km_CountPerm, {&image, 1});
    CountPixels(ioState, km_Width * km_Height);
}

void EncodeGiflib(benchmark::State& ioState, PictureKind inKind) {
    const NvIndexedImage image = DrawPicture(inKind, km_Width, km_Height);
    for (auto _ : ioState)
        benchmark::DoNotOptimize(WriteWithGiflib({&image, 1}));
    CountPixels(ioState, km_Width * km_Height);
}

/** Frames of real files; those that one of the two readers refuses are left out of both measurements. */
class RealFiles {
public:
    static const RealFiles& Get() {
        static const RealFiles files;
        return files;
    }

    std::vector<std::string> mPaths;
    mutable std::vector<MemoryStream> mStreams;

private:
    RealFiles() {
        std::vector<GifByteType> buffer;
        for (const std::string& path : GIFsToMeasure()) {
            MemoryStream stream = LoadFile(path);
            try {
                ReadGIF(NvFileLocator(path.c_str()));
                ReadWithGiflib(stream, buffer);
            } catch (const NvErrorCode&) {
                continue;
            } catch (const std::runtime_error&) {
                continue;
            }
            mPaths.push_back(path);
            mStreams.push_back(std::move(stream));
        }
    }
};

void DecodeFilesOurs(benchmark::State& ioState) {
    const RealFiles& files = RealFiles::Get();
    std::uint64_t pixels = 0;
    for (auto _ : ioState) {
        pixels = 0;
        for (const std::string& path : files.mPaths)
            pixels += ReadGIF(NvFileLocator(path.c_str()));
    }
    CountPixels(ioState, pixels);
}

void DecodeFilesGiflib(benchmark::State& ioState) {
    const RealFiles& files = RealFiles::Get();
    std::vector<GifByteType> buffer;
    std::uint64_t pixels = 0;
    for (auto _ : ioState) {
        pixels = 0;
        for (MemoryStream& stream : files.mStreams)
            pixels += ReadWithGiflib(stream, buffer);
    }
    CountPixels(ioState, pixels);
}

/** The frames of each real file, up to a number of pixels, so that all fit in memory. */
std::vector<std::vector<NvIndexedImage>> LoadRealFrames() {
    constexpr std::uint64_t km_PixelsPerFile = 5'000'000;
    std::vector<std::vector<NvIndexedImage>> files;
    for (const std::string& path : RealFiles::Get().mPaths) {
        NvGIFFile file;
        file.Open(NvFileLocator(path.c_str()), NvFile::km_ReadPerm);
        std::vector<NvIndexedImage> images;
        std::uint64_t pixels = 0;
        for (std::uint32_t i = 0; i < file.GetNumberOfFrames() && pixels < km_PixelsPerFile; ++i) {
            NvIndexedImage image;
            file.ReadFrame(i, image);
            image.GetColorTable() = NvColorTable(256); // files may use indices beyond their tables
            pixels += std::uint64_t{image.GetWidth()} * image.GetHeight();
            images.push_back(std::move(image));
        }
        if (!images.empty())
            files.push_back(std::move(images));
    }
    return files;
}

template <typename Write>
void MeasureEncodingFiles(benchmark::State& ioState, Write inWrite) {
    const std::vector<std::vector<NvIndexedImage>> files = LoadRealFrames();
    std::uint64_t pixels = 0;
    for (const auto& images : files)
        for (const NvIndexedImage& image : images)
            pixels += std::uint64_t{image.GetWidth()} * image.GetHeight();
    for (auto _ : ioState)
        for (const auto& images : files)
            inWrite(images);
    CountPixels(ioState, pixels);
}

void EncodeFilesOurs(benchmark::State& ioState) {
    MeasureEncodingFiles(ioState, [](const std::vector<NvIndexedImage>& inImages) {
        WriteGIF(NvFileLocator(), NvFile::km_WritePerm | NvFile::km_CountPerm, inImages);
    });
}

void EncodeFilesGiflib(benchmark::State& ioState) {
    MeasureEncodingFiles(ioState, [](const std::vector<NvIndexedImage>& inImages) {
        benchmark::DoNotOptimize(WriteWithGiflib(inImages));
    });
}

void Register(const std::string& inName, void (*inMeasure)(benchmark::State&, PictureKind),
              PictureKind inKind) {
    const auto measure = [inMeasure, inKind](benchmark::State& ioState) { inMeasure(ioState, inKind); };
    benchmark::RegisterBenchmark((inName + "/" + PictureName(inKind)).c_str(), measure)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int inArgumentCount, char** inArguments) {
    benchmark::Initialize(&inArgumentCount, inArguments);
    for (const PictureKind kind : km_AllPictures) {
        Register("decode/ours", DecodeOurs, kind);
        Register("decode/giflib", DecodeGiflib, kind);
    }
    for (const PictureKind kind : km_AllPictures) {
        Register("encode/ours", EncodeOurs, kind);
        Register("encode/giflib", EncodeGiflib, kind);
    }
    if (!GIFsToMeasure().empty()) {
        benchmark::RegisterBenchmark("decode/ours/files", DecodeFilesOurs)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("decode/giflib/files", DecodeFilesGiflib)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("encode/ours/files", EncodeFilesOurs)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("encode/giflib/files", EncodeFilesGiflib)->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
