#include "term/results/listener.h"

#include "term/text/messages.h"
#include "win/batch/outcomewords.h"

std::string TermOutcomeWords(const MizerFileResult& inResult) {
    return TermPrintable(MizerOutcomeWords(inResult));
}
