#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "wnatom/wnprefnumber.h"

/** A preferences key under one root, open for a single read or write.
 *
 *  Only one process at a time holds a key open for writing; readers never wait and see the last complete
 *  state. The destructor closes the key. */
class WnPrefKey {
public:
    enum Root { km_Machine, km_User };
    enum Access { km_Read, km_ReadWrite };

    explicit WnPrefKey(const char* inKeyPath);
    ~WnPrefKey();
    WnPrefKey(const WnPrefKey&) = delete;
    WnPrefKey& operator=(const WnPrefKey&) = delete;

    /** The file of a key that is taken for no preferences, since it is larger than any could be; empty when
     *  there is none. */
    static std::string FindOversized(Root inRoot, const char* inKeyPath);

    /** km_ReadWrite makes a missing key, and waits up to some seconds for a process that is writing it.
     *  @return false when this object is open already, the key cannot be opened that way, or both roots are
     *          one place and the user's is asked for */
    bool OpenKey(Root inRoot, Access inAccess);
    void CloseKey();

    /** The key is open. Whether a value is a number or a text follows from its contents, not from a type. */
    bool ReadDWord(const char* inName, std::uint32_t& outValue) const;
    bool ReadString(const char* inName, std::string& outText) const;

    /** The key is open for writing. The stored state changes in one step or not at all. */
    bool WriteDWord(const char* inName, std::uint32_t inValue);
    bool WriteDWords(std::span<const WnPrefNumber> inNumbers);
    bool WriteString(const char* inName, const std::string& inText);

private:
    struct Handle;

    std::string mKeyPath;
    std::unique_ptr<Handle> mHandle; // null while closed
};
