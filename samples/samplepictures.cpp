#include "samples/samplepictures.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/image/nvindexedimage.h"

namespace {

/** A canvas of palette indices. */
class Canvas {
public:
    Canvas(int inWidth, int inHeight, const NvColorTable& inTable, std::uint8_t inFill = 0)
        : mWidth(inWidth),
          mHeight(inHeight),
          mTable(inTable),
          mPixels(static_cast<std::size_t>(inWidth) * static_cast<std::size_t>(inHeight), inFill) {}

    int GetWidth() const { return mWidth; }
    int GetHeight() const { return mHeight; }

    /** Writes a pixel; outside of the canvas, nothing. */
    void Set(int inX, int inY, std::uint8_t inIndex) {
        if (inX >= 0 && inX < mWidth && inY >= 0 && inY < mHeight)
            mPixels.begin()[inY * mWidth + inX] = inIndex;
    }

    void FillRectangle(int inLeft, int inTop, int inWidth, int inHeight, std::uint8_t inIndex) {
        for (int y = inTop; y < inTop + inHeight; ++y) {
            for (int x = inLeft; x < inLeft + inWidth; ++x)
                Set(x, y, inIndex);
        }
    }

    void FillDisc(int inX, int inY, int inRadius, std::uint8_t inIndex) {
        for (int y = -inRadius; y <= inRadius; ++y) {
            for (int x = -inRadius; x <= inRadius; ++x) {
                if (x * x + y * y <= inRadius * inRadius)
                    Set(inX + x, inY + y, inIndex);
            }
        }
    }

    NvIndexedImage MakeImage() const {
        NvIndexedImage image(static_cast<std::uint32_t>(mWidth), static_cast<std::uint32_t>(mHeight), mTable);
        const NvPixelLock lock(image);
        for (int y = 0; y < mHeight; ++y)
            std::copy_n(mPixels.begin() + y * mWidth, mWidth, lock.Row(static_cast<std::uint32_t>(y)));
        return image;
    }

private:
    int mWidth;
    int mHeight;
    NvColorTable mTable;
    std::vector<std::uint8_t> mPixels;
};

/** Where a frame lies and how it is stored. */
struct Manner {
    int mLeft = 0;
    int mTop = 0;
    std::uint16_t mDelay = 0;
    std::uint32_t mDisposal = NvGIFFrameInfo::km_DisposeUnspecified;
    int mTransparentIndex = -1; // none
    bool mInterlaced = false;
    bool mLocalTable = false;
};

class Film {
public:
    explicit Film(const NvColorTable& inTable) : mTable(inTable) {}

    void Add(const Canvas& inCanvas, const Manner& inManner) { mFrames.push_back({inCanvas, inManner}); }

    /** The first frame's size is the screen's. */
    void Write(const std::string& inPath) const {
        NvGIFFile file;
        file.Open(NvFileLocator(inPath.c_str()), NvFile::km_WritePerm);
        file.SetScreenSize(static_cast<std::uint32_t>(mFrames[0].mCanvas.GetWidth()),
                           static_cast<std::uint32_t>(mFrames[0].mCanvas.GetHeight()));
        file.SetNumberOfFrames(static_cast<std::uint32_t>(mFrames.size()));
        std::shared_ptr<NvGIFGlobalInfo> global = NvGIFFile::CreateGlobalInfo();
        global->mVersionFlag = 1;
        global->mColorResolution = 8;
        global->mHasGlobalTable = 1;
        global->mColorTable = mTable;
        global->mHasLoop = mFrames.size() > 1 ? 1 : 0;
        file.SetGlobalInfo(global);
        for (const auto& [canvas, manner] : mFrames)
            WriteFrame(file, canvas, manner);
        file.Close();
    }

private:
    void WriteFrame(NvGIFFile& ioFile, const Canvas& inCanvas, const Manner& inManner) const {
        NvGIFFrameInfo info;
        info.mLeft = static_cast<std::uint16_t>(inManner.mLeft);
        info.mTop = static_cast<std::uint16_t>(inManner.mTop);
        info.mWidth = static_cast<std::uint16_t>(inCanvas.GetWidth());
        info.mHeight = static_cast<std::uint16_t>(inCanvas.GetHeight());
        info.mHasLocalTable = inManner.mLocalTable ? 1 : 0;
        if (inManner.mLocalTable)
            info.mColorTable = mTable;
        info.mInterlaced = inManner.mInterlaced ? 1 : 0;
        info.mDelay = inManner.mDelay;
        info.mDisposal = inManner.mDisposal;
        info.mHasTransparency = inManner.mTransparentIndex >= 0 ? 1 : 0;
        info.mTransparentIndex = static_cast<std::uint8_t>(std::max(inManner.mTransparentIndex, 0));
        info.mHasGraphicControl = info.mHasTransparency || info.mDelay != 0 || info.mDisposal != 0 ? 1 : 0;
        ioFile.WriteFrame(inCanvas.MakeImage(), info);
    }

    struct Frame {
        Canvas mCanvas;
        Manner mManner;
    };

    NvColorTable mTable;
    std::vector<Frame> mFrames;
};

/** The 216 colours of six even steps per channel, filled up with greys. */
NvColorTable MakeWebTable() {
    NvColorTable table(256);
    table.MakeWebPalette(true);
    return table;
}

NvColorTable MakeGreyTable() {
    NvColorTable table(256);
    for (std::uint32_t i = 0; i < 256; ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        table.GetColors()[i] = {grey, grey, grey};
    }
    return table;
}

std::uint8_t Nearest(const NvColorTable& inTable, std::uint32_t inRed, std::uint32_t inGreen,
                     std::uint32_t inBlue) {
    return static_cast<std::uint8_t>(inTable.FindClosestColor(inRed | inGreen << 8 | inBlue << 16, -1));
}

/** Pseudo-random numbers, the same on every run (xorshift). */
std::uint32_t Scramble(std::uint32_t inValue) {
    inValue = inValue * 2654435761u + 1;
    inValue ^= inValue << 13;
    inValue ^= inValue >> 17;
    return inValue ^ inValue << 5;
}

void DrawIcon(const std::string& inPath) {
    const NvColorTable table = MakeWebTable();
    constexpr std::uint8_t nothing = 255;
    Canvas canvas(48, 48, table, nothing);
    canvas.FillDisc(24, 24, 20, Nearest(table, 0, 51, 102));
    canvas.FillDisc(24, 24, 18, Nearest(table, 0, 102, 204));
    canvas.FillDisc(19, 18, 6, Nearest(table, 102, 153, 255));
    canvas.FillRectangle(22, 12, 5, 25, Nearest(table, 255, 255, 255));
    canvas.FillRectangle(12, 22, 25, 5, Nearest(table, 255, 255, 255));
    Film film(table);
    film.Add(canvas, {.mTransparentIndex = nothing});
    film.Write(inPath);
}

/** Every frame is stored whole, with a colour table of its own. */
void DrawSpinner(const std::string& inPath) {
    constexpr std::array<std::array<int, 2>, 12> places = {{{0, -20},
                                                            {10, -17},
                                                            {17, -10},
                                                            {20, 0},
                                                            {17, 10},
                                                            {10, 17},
                                                            {0, 20},
                                                            {-10, 17},
                                                            {-17, 10},
                                                            {-20, 0},
                                                            {-17, -10},
                                                            {-10, -17}}};
    const NvColorTable table = MakeGreyTable();
    Film film(table);
    for (std::size_t frame = 0; frame < places.size(); ++frame) {
        Canvas canvas(64, 64, table, 255);
        for (std::size_t i = 0; i < places.size(); ++i) {
            const std::size_t age = (frame + places.size() - i) % places.size();
            canvas.FillDisc(32 + places[i][0], 32 + places[i][1], 4,
                            static_cast<std::uint8_t>(20 + age * 18));
        }
        film.Add(canvas, {.mDelay = 8, .mLocalTable = true});
    }
    film.Write(inPath);
}

/** Sky, sun and sea in soft shades, dithered to the web colours as a photograph would be. */
void DrawSunset(const std::string& inPath) {
    constexpr int bayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    const NvColorTable table = MakeWebTable();
    Canvas canvas(128, 96, table);
    for (int y = 0; y < 96; ++y) {
        for (int x = 0; x < 128; ++x) {
            const int toSun = (x - 80) * (x - 80) + (y - 50) * (y - 50);
            const int glow = std::max(0, 160 - toSun / 12);
            const bool isSea = y >= 60;
            const int light = (isSea ? 140 - y : 40 + y) + glow;
            const int threshold = bayer[y % 4][x % 4] * 51 / 16 - 25;
            const auto channel = [&](int inValue) {
                return static_cast<std::uint32_t>(std::clamp(inValue + threshold, 0, 255));
            };
            canvas.Set(
                x, y, Nearest(table, channel(light), channel(light * 2 / 3), channel(isSea ? 110 : 160 - y)));
        }
    }
    Film film(table);
    film.Add(canvas, {});
    film.Write(inPath);
}

/** A ball that the viewer erases before each new frame. */
void DrawBall(const std::string& inPath) {
    const NvColorTable table = MakeWebTable();
    constexpr std::uint8_t nothing = 255;
    Canvas meadow(96, 64, table, Nearest(table, 153, 204, 255));
    for (int x = 0; x < 96; ++x)
        meadow.FillRectangle(x, 44 + static_cast<int>(Scramble(static_cast<std::uint32_t>(x)) % 4), 1, 20,
                             Nearest(table, 51, (x / 3) % 2 ? 153 : 102, 0));
    Film film(table);
    film.Add(meadow, {.mDelay = 10, .mDisposal = NvGIFFrameInfo::km_DisposeLeave});
    for (int step = 0; step < 10; ++step) {
        Canvas ball(17, 17, table, nothing);
        ball.FillDisc(8, 8, 8, Nearest(table, 153, 0, 0));
        ball.FillDisc(8, 8, 7, Nearest(table, 255, 51, 0));
        ball.FillDisc(5, 5, 2, Nearest(table, 255, 204, 153));
        const int up = (5 - step) * (5 - step);
        film.Add(ball, {.mLeft = step * 8,
                        .mTop = 5 + up,
                        .mDelay = 10,
                        .mDisposal = NvGIFFrameInfo::km_DisposeRestore,
                        .mTransparentIndex = nothing});
    }
    film.Write(inPath);
}

void DrawTiles(const std::string& inPath) {
    const NvColorTable table = MakeWebTable();
    Canvas canvas(120, 90, table, Nearest(table, 255, 255, 255));
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 8; ++column) {
            const std::uint32_t random = Scramble(static_cast<std::uint32_t>(row * 8 + column));
            canvas.FillRectangle(column * 15 + 1, row * 15 + 1, 13, 13,
                                 Nearest(table, random & 255, random >> 8 & 255, random >> 16 & 255));
            canvas.FillDisc(column * 15 + 7, row * 15 + 7, 4, Nearest(table, 255, 255, 204));
        }
    }
    Film film(table);
    film.Add(canvas, {.mInterlaced = true});
    film.Write(inPath);
}

/** A terminal in which lines of made-up text appear; every frame is the whole screen. */
void DrawTerminal(const std::string& inPath) {
    const NvColorTable table = MakeWebTable();
    const std::uint8_t paper = Nearest(table, 0, 0, 0);
    const std::uint8_t ink = Nearest(table, 204, 204, 204);
    const std::uint8_t prompt = Nearest(table, 0, 204, 51);
    Canvas screen(160, 96, table, paper);
    Film film(table);
    for (int line = 0; line < 10; ++line) {
        const int length = 8 + static_cast<int>(Scramble(static_cast<std::uint32_t>(line)) % 20);
        for (int letter = 0; letter < length; ++letter) {
            const std::uint32_t shape = Scramble(static_cast<std::uint32_t>(line * 40 + letter)) % 26;
            for (int dot = 0; dot < 15 && shape != 0; ++dot) {
                if (Scramble(shape * 16 + static_cast<std::uint32_t>(dot)) % 2)
                    screen.Set(6 + letter * 5 + dot % 3, 6 + line * 8 + dot / 3, letter == 0 ? prompt : ink);
            }
        }
        film.Add(screen, {.mDelay = 40, .mDisposal = NvGIFFrameInfo::km_DisposeLeave});
    }
    film.Write(inPath);
}

} // namespace

const std::vector<SamplePicture>& GetSamplePictures() {
    static const std::vector<SamplePicture> pictures = {
        {"ball.gif", "frames that are taken away again (restore to previous)", DrawBall},
        {"icon.gif", "a small still picture with a transparent border and a full colour table", DrawIcon},
        {"spinner.gif", "an animation of whole frames, each with its own colour table", DrawSpinner},
        {"sunset.gif", "a dithered still picture", DrawSunset},
        {"terminal.gif", "a screen on which text appears", DrawTerminal},
        {"tiles.gif", "an interlaced still picture", DrawTiles},
    };
    return pictures;
}
