#pragma once

#include "samples/samplepictures.h"
#include "tests/support/programrun.h"

/** The real program in a fresh folder, with the sample pictures at hand. */
class ProgramTest : public testing::Test {
protected:
    using Files = std::map<std::string, std::string>; // names and bytes

    void DrawSamples() const {
        for (const SamplePicture& picture : GetSamplePictures())
            picture.mDraw(mFolder / picture.mFileName);
    }
    void DrawSample(const std::string& inSample, const std::string& inName) const {
        for (const SamplePicture& picture : GetSamplePictures())
            if (inSample == picture.mFileName)
                picture.mDraw(mFolder / inName);
    }

    std::string Read(const std::string& inName) const { return ReadTestFile(mFolder / inName); }
    void Write(const std::string& inName, const std::string& inBytes) const {
        WriteTestFile(mFolder / inName, inBytes);
    }
    bool Has(const std::string& inName) const { return std::filesystem::exists(mFolder / inName); }

    /** Every regular file below a folder. */
    Files ReadAll(const std::string& inFolder = ".") const {
        Files files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mFolder / inFolder))
            if (entry.is_regular_file())
                files[entry.path().lexically_relative(mFolder / inFolder).generic_string()] =
                    ReadTestFile(entry.path().string());
        return files;
    }

    /** Runs, and expects the complaint, the status, nothing else and no change to any file. */
    void ExpectRefusal(const std::vector<std::string>& inArguments, const std::string& inText,
                       int inStatus = 1) {
        const Files before = ReadAll();
        const ProgramResult result = mRunner.Run(inArguments);
        EXPECT_EQ(result.mErr, "parvigif: " + inText + "\n");
        EXPECT_EQ(result.mOut, "");
        EXPECT_EQ(result.mStatus, inStatus);
        EXPECT_EQ(ReadAll(), before);
    }

    TestFolder mFolder;
    ProgramRunner mRunner{mFolder.GetPath()};
};
