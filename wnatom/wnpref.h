#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "wnatom/wnprefnumber.h"

/** Settings and totals of one product and version, kept between runs.
 *
 *  Values stand under a machine-wide and a per-user root. Reads prefer the machine-wide value; writes go to
 *  both, so that a user without rights to the machine-wide root still keeps settings. No key stays open
 *  between calls. Nothing here raises an NvErrorCode: a store that cannot be reached answers false. */
class WnPref {
public:
    /** The key "Software\Norvek\<product>\<version>". Its length is at most 1023 characters (asserted). */
    WnPref(const char* inProduct, const char* inVersion);
    /** A ready key path of at most 1023 characters (asserted). */
    explicit WnPref(const char* inKeyPath);

    const char* GetKeyPath() const { return mKeyPath.c_str(); }

    /** @return false, with outValue untouched, when neither root has a number of that name. */
    bool ReadDWord(const char* inName, std::uint32_t& outValue) const;

    /** Where a value comes from. */
    enum class Origin { km_None, km_Machine, km_User };

    /** A stored number, ignoring what overrides it, and where it is stored.
     *  @return km_None, with outValue untouched, when neither root has one */
    Origin FindDWord(const char* inName, std::uint32_t& outValue) const;

    /** Like ReadDWord, but a missing value gives inDefault. @return whether there was one. */
    bool ReadDWordDefault(const char* inName, std::uint32_t& outValue, std::uint32_t inDefault) const;

    /** @param outBuffer  receives the text with its NUL, inBufferSize bytes long
     *  @return false, with outBuffer untouched, when there is no such text or it does not fit */
    bool ReadString(const char* inName, char* outBuffer, std::size_t inBufferSize) const;

    /** @return true when at least one root took the value. */
    bool WriteDWord(const char* inName, std::uint32_t inValue);

    /** Stores inSize bytes of text, a closing NUL included or not. Text with a line break is refused. */
    bool WriteString(const char* inName, const char* inData, std::size_t inSize);

    /** Files that are ignored although they stand where preferences are read: too large to be any. */
    std::vector<std::string> FindOversized() const;

    /** Adds to stored numbers (missing: 0, wrapping at 32 bits) in one step that no other process can
     *  interrupt, so that runs side by side lose nothing. Each root is written once. */
    bool AddToDWords(std::span<const WnPrefNumber> inDeltas);

    /** A value for this object's lifetime that overrides the stored one and is never stored. */
    void Override(const char* inName, std::uint32_t inValue);

    /** From now on writes answer true and store nothing. */
    void KeepStoreAsItIs() { mKeepsStore = true; }

private:
    std::string mKeyPath;
    bool mKeepsStore = false;
    std::map<std::string, std::uint32_t, std::less<>> mOverrides;
};
