#include "wnatom/wnpref.h"

#include <cstring>
#include <initializer_list>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "wnatom/wnprefkey.h"

namespace {

constexpr std::size_t km_MaxKeyPath = 1023;
constexpr auto km_Roots = {WnPrefKey::km_Machine, WnPrefKey::km_User};

/** Hands the first root's key that inRead accepts to it. */
template <typename Reader>
bool ReadFromRoots(const char* inKeyPath, Reader inRead) {
    for (const WnPrefKey::Root root : km_Roots) {
        WnPrefKey key(inKeyPath);
        if (key.OpenKey(root, WnPrefKey::km_Read) && inRead(key))
            return true;
    }
    return false;
}

template <typename Writer>
bool WriteToRoots(const char* inKeyPath, Writer inWrite) {
    bool written = false;
    for (const WnPrefKey::Root root : km_Roots) {
        WnPrefKey key(inKeyPath);
        if (key.OpenKey(root, WnPrefKey::km_ReadWrite) && inWrite(key))
            written = true;
    }
    return written;
}

} // namespace

WnPref::WnPref(const char* inProduct, const char* inVersion)
    : mKeyPath(std::string("Software\\Norvek\\") + inProduct + "\\" + inVersion) {
    NvAssert(mKeyPath.size() <= km_MaxKeyPath);
}

WnPref::WnPref(const char* inKeyPath) : mKeyPath(inKeyPath) {
    NvAssert(mKeyPath.size() <= km_MaxKeyPath);
}

bool WnPref::ReadDWord(const char* inName, std::uint32_t& outValue) const {
    NvAssert(inName);
    if (const auto found = mOverrides.find(inName); found != mOverrides.end()) {
        outValue = found->second;
        return true;
    }
    return ReadFromRoots(GetKeyPath(), [&](const WnPrefKey& key) { return key.ReadDWord(inName, outValue); });
}

WnPref::Origin WnPref::FindDWord(const char* inName, std::uint32_t& outValue) const {
    NvAssert(inName);
    for (const WnPrefKey::Root root : km_Roots) {
        WnPrefKey key(GetKeyPath());
        if (key.OpenKey(root, WnPrefKey::km_Read) && key.ReadDWord(inName, outValue))
            return root == WnPrefKey::km_Machine ? Origin::km_Machine : Origin::km_User;
    }
    return Origin::km_None;
}

bool WnPref::ReadDWordDefault(const char* inName, std::uint32_t& outValue, std::uint32_t inDefault) const {
    if (ReadDWord(inName, outValue))
        return true;
    outValue = inDefault;
    return false;
}

bool WnPref::ReadString(const char* inName, char* outBuffer, std::size_t inBufferSize) const {
    NvAssert(inName);
    return ReadFromRoots(GetKeyPath(), [&](const WnPrefKey& key) {
        std::string text;
        if (!key.ReadString(inName, text) || text.size() >= inBufferSize)
            return false;
        std::memcpy(outBuffer, text.c_str(), text.size() + 1);
        return true;
    });
}

bool WnPref::WriteDWord(const char* inName, std::uint32_t inValue) {
    NvAssert(inName);
    if (mKeepsStore)
        return true;
    return WriteToRoots(GetKeyPath(), [&](WnPrefKey& key) { return key.WriteDWord(inName, inValue); });
}

bool WnPref::WriteString(const char* inName, const char* inData, std::size_t inSize) {
    NvAssert(inName);
    std::string text(inData, inSize);
    if (!text.empty() && text.back() == '\0')
        text.pop_back();
    if (text.find_first_of(std::string_view("\0\r\n", 3)) != std::string::npos)
        return false;
    if (mKeepsStore)
        return true;
    return WriteToRoots(GetKeyPath(), [&](WnPrefKey& key) { return key.WriteString(inName, text); });
}

bool WnPref::AddToDWords(std::span<const WnPrefNumber> inDeltas) {
    if (mKeepsStore)
        return true;
    // No other run comes between the two roots, which are always opened in this order.
    WnPrefKey machine(GetKeyPath());
    WnPrefKey user(GetKeyPath());
    const bool hasMachine = machine.OpenKey(WnPrefKey::km_Machine, WnPrefKey::km_ReadWrite);
    const bool hasUser = user.OpenKey(WnPrefKey::km_User, WnPrefKey::km_ReadWrite);
    // A root that has no such value yet continues what a reader saw so far, not 0: otherwise the first write
    // to the machine-wide root would hide a user's total.
    std::vector<WnPrefNumber> seen(inDeltas.begin(), inDeltas.end());
    for (WnPrefNumber& number : seen) {
        number.mValue = 0;
        ReadFromRoots(GetKeyPath(),
                      [&](const WnPrefKey& key) { return key.ReadDWord(number.mName, number.mValue); });
    }
    const auto add = [&](WnPrefKey& key) {
        std::vector<WnPrefNumber> sums = seen;
        for (std::size_t i = 0; i < sums.size(); ++i) {
            key.ReadDWord(sums[i].mName, sums[i].mValue);
            sums[i].mValue += inDeltas[i].mValue;
        }
        return key.WriteDWords(sums);
    };
    const bool isWritten = hasMachine && add(machine);
    return (hasUser && add(user)) || isWritten;
}

std::vector<std::string> WnPref::FindOversized() const {
    std::vector<std::string> files;
    for (const WnPrefKey::Root root : km_Roots) {
        if (std::string file = WnPrefKey::FindOversized(root, GetKeyPath()); !file.empty())
            files.push_back(std::move(file));
    }
    return files;
}

void WnPref::Override(const char* inName, std::uint32_t inValue) {
    NvAssert(inName);
    mOverrides[inName] = inValue;
}
