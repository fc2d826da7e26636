#include "nvcode2/nvfilereader.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "nvcode2/nvfile.h"
#include "tests/image/images.h"
#include "tests/support/codeof.h"
#include "tests/support/testfolder.h"

namespace {

// Jumps are around the places where what was read ahead begins and ends.
TEST(FileReader, ReadsAheadWithoutLosingItsPlace) {
    std::mt19937 random(1);
    std::string bytes(200000, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    const TestFolder folder;
    NvFile file(WriteTestFile(folder / "bytes", bytes).c_str());
    file.Open(NvFile::km_ReadPerm);
    NvFileReader reader(file);
    std::uint32_t position = 0;
    for (int i = 0; i < 4000; ++i) {
        if (RandomBelow(random, 3) == 0) {
            position = RandomBelow(random, 4) * 65536 + RandomBelow(random, 20);
            position -= std::min(position, 10U);
            reader.Seek(position);
        }
        ASSERT_EQ(reader.GetPosition(), position);
        std::string piece(RandomBelow(random, i % 50 ? 20 : 70000), '\0');
        const auto length = static_cast<std::uint32_t>(piece.size());
        if (position + length > bytes.size()) {
            EXPECT_EQ(CodeOf([&] { reader.Skip(length); }), 18u);
            EXPECT_TRUE(reader.IsAtEnd());
            reader.Seek(position = 0);
            continue;
        }
        if (i % 2)
            reader.Skip(length);
        else
            reader.Read(piece.data(), length);
        ASSERT_TRUE(i % 2 || piece == bytes.substr(position, length)) << position;
        position += length;
        EXPECT_EQ(reader.IsAtEnd(), position == bytes.size());
    }
}

} // namespace
