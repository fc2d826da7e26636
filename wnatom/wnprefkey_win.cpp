#include "wnatom/wnprefkey.h"

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"

// A key of the registry. Names and numbers pass through its narrow functions, which the manifest's code page
// makes UTF-8; texts may hold a path, so they take the wide ones.

namespace {

constexpr const wchar_t* km_WritersMutex = L"Local\\Norvek-Preferences";
constexpr DWORD km_LongestWait = 5000; // milliseconds; writing takes one

/** Held by the one process that writes. A writer that died in between left every value whole. */
class WriterLock {
public:
    WriterLock() : mMutex(CreateMutexW(nullptr, FALSE, km_WritersMutex)) {
        const DWORD outcome = WaitForSingleObject(mMutex.Get(), km_LongestWait);
        mIsHeld = outcome == WAIT_OBJECT_0 || outcome == WAIT_ABANDONED;
    }
    ~WriterLock() {
        if (mIsHeld)
            ReleaseMutex(mMutex.Get());
    }
    bool IsHeld() const { return mIsHeld; }
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;

private:
    NvWindowsHandle mMutex;
    bool mIsHeld;
};

HKEY GetRootKey(WnPrefKey::Root inRoot) {
    return inRoot == WnPrefKey::km_Machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

} // namespace

struct WnPrefKey::Handle {
    ~Handle() {
        if (mKey)
            RegCloseKey(mKey);
    }

    std::unique_ptr<WriterLock> mLock; // null while the key is only read; let go after the key is closed
    HKEY mKey = nullptr;
};

WnPrefKey::WnPrefKey(const char* inKeyPath) : mKeyPath(inKeyPath) {}

WnPrefKey::~WnPrefKey() {
    CloseKey();
}

std::string WnPrefKey::FindOversized(Root /*inRoot*/, const char* /*inKeyPath*/) {
    return {}; // the registry holds values of any number
}

bool WnPrefKey::OpenKey(Root inRoot, Access inAccess) {
    if (mHandle)
        return false;
    auto handle = std::make_unique<Handle>();
    LSTATUS status = ERROR_SUCCESS;
    if (inAccess == km_ReadWrite) {
        handle->mLock = std::make_unique<WriterLock>();
        if (!handle->mLock->IsHeld())
            return false;
        status = RegCreateKeyExA(GetRootKey(inRoot), mKeyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr, &handle->mKey, nullptr);
    } else {
        // Reading neither makes the key nor asks for more rights than a plain user has.
        status = RegOpenKeyExA(GetRootKey(inRoot), mKeyPath.c_str(), 0, KEY_QUERY_VALUE, &handle->mKey);
    }
    if (status != ERROR_SUCCESS)
        return false;
    mHandle = std::move(handle);
    return true;
}

void WnPrefKey::CloseKey() {
    mHandle.reset();
}

bool WnPrefKey::ReadDWord(const char* inName, std::uint32_t& outValue) const {
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LSTATUS status =
        RegQueryValueExA(mHandle->mKey, inName, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof(value))
        return false;
    outValue = value;
    return true;
}

bool WnPrefKey::ReadString(const char* inName, std::string& outText) const {
    const std::wstring name = NvWiden(inName);
    DWORD size = 0; // bytes, a closing NUL included
    if (RegGetValueW(mHandle->mKey, nullptr, name.c_str(), RRF_RT_REG_SZ, nullptr, nullptr, &size) !=
        ERROR_SUCCESS)
        return false;
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (RegGetValueW(mHandle->mKey, nullptr, name.c_str(), RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
        ERROR_SUCCESS)
        return false;
    outText = NvNarrow(text.c_str());
    return true;
}

bool WnPrefKey::WriteDWord(const char* inName, std::uint32_t inValue) {
    const DWORD value = inValue;
    return RegSetValueExA(mHandle->mKey, inName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                          sizeof(value)) == ERROR_SUCCESS;
}

bool WnPrefKey::WriteDWords(std::span<const WnPrefNumber> inNumbers) {
    bool areWritten = true;
    for (const WnPrefNumber& number : inNumbers)
        areWritten = WriteDWord(number.mName, number.mValue) && areWritten;
    return areWritten;
}

bool WnPrefKey::WriteString(const char* inName, const std::string& inText) {
    const std::wstring text = NvWiden(inText);
    return RegSetValueExW(mHandle->mKey, NvWiden(inName).c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}
