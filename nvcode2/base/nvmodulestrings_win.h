#pragma once

#include "nvcode2/base/nvstringresource.h"

/** The string resources in the file of a program or a library. For sources named _win only. Its texts are
 * ASCII, or the program has asked for UTF-8 as its code page. */
class NvModuleStrings : public NvStringResources {
public:
    /** @param inModule  its handle (HMODULE), borrowed; or null, and there are no texts */
    explicit NvModuleStrings(void* inModule) : mModule(inModule) {}

    static NvModuleStrings OfThisProgram();

    bool HasModule() const { return mModule != nullptr; }

    /** Resources of this kind come in blocks of 16, so the size is that of the block. */
    NvStringBlock FindBlock(std::uint32_t inStringID) const override;
    std::uint32_t LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const override;

private:
    void* mModule;
};
