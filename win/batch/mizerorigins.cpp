#include "win/batch/mizerorigins.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <memory>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnhash.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr std::uint64_t km_LargestFile = 1 << 20; // bytes; a line has about 70

} // namespace

MizerContent MizerReadContent(const char* inPath) {
    const std::vector<unsigned char> bytes = MizerReadWholeFile(inPath);
    return {WnHash({reinterpret_cast<const char*>(bytes.data()), bytes.size()}), bytes.size()};
}

std::string MizerOrigins::GetPath() const {
    return mFolder.MakePath("PVGFKept.TXT");
}

std::vector<MizerOrigins::Record> MizerOrigins::Read() const {
    std::vector<Record> records;
    const std::string path = GetPath();
    if (WnGetFileKind(path.c_str()) != WnFileKind::km_RegularFile) // a pipe would keep its reader waiting
        return records;
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        Record record;
        char work = 0;
        int end = 0;
        const int fields = std::sscanf(
            line.c_str(), "%16" SCNx64 " %" SCNu64 " %16" SCNx64 " %" SCNu64 " %c%n", &record.mPicture.mHash,
            &record.mPicture.mSize, &record.mOriginal.mHash, &record.mOriginal.mSize, &work, &end);
        if (fields != 5 || static_cast<std::size_t>(end) != line.size() || (work != 'b' && work != 'd'))
            continue;
        record.mWork = work == 'd' ? Work::km_Done : Work::km_Begun;
        records.push_back(record);
    }
    return records;
}

std::string MizerOrigins::MakeLine(const Record& inRecord) {
    std::array<char, 128> line{};
    std::snprintf(line.data(), line.size(), "%016" PRIx64 " %" PRIu64 " %016" PRIx64 " %" PRIu64 " %c\n",
                  inRecord.mPicture.mHash, inRecord.mPicture.mSize, inRecord.mOriginal.mHash,
                  inRecord.mOriginal.mSize, inRecord.mWork == Work::km_Done ? 'd' : 'b');
    return line.data();
}

MizerOrigins::Work MizerOrigins::FindWork(const MizerContent& inPicture,
                                          const MizerContent& inOriginal) const {
    Work work = Work::km_Unknown;
    for (const Record& record : Read())
        if (record.mPicture == inPicture && record.mOriginal == inOriginal)
            work = record.mWork; // the last one counts
    return work;
}

bool MizerOrigins::IsOriginal(const MizerContent& inContent) const {
    const std::vector<Record> records = Read();
    return std::any_of(records.begin(), records.end(),
                       [&](const Record& record) { return record.mOriginal == inContent; });
}

bool MizerOrigins::CanAdd() const {
    const std::string path = GetPath();
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "ab"), &std::fclose);
    return file != nullptr;
}

bool MizerOrigins::Add(const MizerContent& inPicture, const MizerContent& inOriginal, Work inWork) const {
    try {
        const std::string path = GetPath();
        const auto state = WnGetFileState(path.c_str());
        if (state && WnGetFileKind(path.c_str()) != WnFileKind::km_RegularFile)
            return false;
        if (state && state->mSize > km_LargestFile)
            DropOldest();
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "ab"),
                                                                   &std::fclose);
        // Starts a line of its own, whatever a run that was killed has left at the end.
        return file &&
               std::fputs(("\n" + MakeLine({inPicture, inOriginal, inWork})).c_str(), file.get()) >= 0 &&
               std::fflush(file.get()) == 0;
    } catch (const NvErrorCode&) {
        return false;
    }
}

void MizerOrigins::DropOldest() const {
    const std::vector<Record> records = Read();
    WnSafeFile file(GetPath().c_str());
    for (std::size_t i = records.size() / 2; i < records.size(); ++i) {
        const std::string line = MakeLine(records[i]);
        file.Write(line.data(), line.size());
    }
    file.Commit();
}
