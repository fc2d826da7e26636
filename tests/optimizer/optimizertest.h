#pragma once

#include "tests/support/testanimation.h"
#include "tests/support/testgif.h"
#include "win/optimizer/pvopt.h"

inline void ExpectTheSameIsShown(const TestGIF& inOriginal, const TestGIF& inResult) {
    const TestComparison comparison = CompareGIFs(inOriginal, inResult);
    EXPECT_EQ(comparison.mDifference, "");
    EXPECT_EQ(comparison.mDiffering, 0u);
}

/** An optimizer in an environment of its own, over files of a fresh folder. */
class OptimizerTest : public testing::Test {
protected:
    std::string Write(const TestGIF& inGIF, const std::string& inName = "pictures/test.gif") {
        return WriteTestFile(mFolder / inName, EncodeGIF(inGIF));
    }

    /** Runs both passes. @return the size that the optimizer reports */
    std::uint32_t Optimize(const std::string& inPath) {
        PvOptimizer optimizer(mHost, mSettings);
        const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(inPath));
        const std::uint32_t newSize = optimizer.OptimizeGIFFile(inPath.c_str(), size);
        mOutcome = optimizer.GetOutcome();
        EXPECT_EQ(newSize, std::filesystem::file_size(inPath)) << "the size reported is not that of the file";
        return newSize;
    }

    /** Names in a folder below the test's, in order. */
    std::vector<std::string> Names(const std::string& inFolder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder / inFolder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    TestFolder mFolder;
    TestEnvironment mEnvironment{mFolder};
    TestVariable mScratch{"TMPDIR", mFolder / "scratch"};
    TestHost mHost;
    PvOptSettings mSettings;
    PvOutcome mOutcome;

    OptimizerTest() {
        std::filesystem::create_directory(mFolder / "scratch");
        mSettings.mKeepsOriginal = true;
    }
};
