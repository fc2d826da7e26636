#include "win/pvopt.h"

PvOptimizer::PvOptimizer(const WnPref& inPrefs, PvOptHost& inHost, const PvOptSettings& inSettings)
    : mPrefs(inPrefs), mHost(inHost), mSettings(inSettings) {}

std::uint32_t PvOptimizer::OptimizeGIFFile(const char* /*inPath*/, std::uint32_t inOriginalSize) {
    mOutcome = PvOutcome();
    return inOriginalSize;
}
