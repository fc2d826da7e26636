#include "nvcode2/gif/nvgifinfo.h"

#include <utility>

NvGIFComments::NvGIFComments(const NvGIFComments& inOther) : NvList() {
    for (std::string& text : inOther.GetTexts())
        Append(std::move(text));
}

NvGIFComments::~NvGIFComments() {
    for (const Node* node = GetFirst(); node; node = node->GetNext())
        delete static_cast<NvGIFComment*>(node->GetElement());
}

void NvGIFComments::Append(std::string inText) {
    auto comment = std::make_unique<NvGIFComment>(NvGIFComment{std::move(inText)});
    NvList::Append(comment.get());
    static_cast<void>(comment.release()); // the list has it now
}

std::vector<std::string> NvGIFComments::GetTexts() const {
    std::vector<std::string> texts;
    for (const Node* node = GetFirst(); node; node = node->GetNext())
        texts.push_back(static_cast<const NvGIFComment*>(node->GetElement())->mText);
    return texts;
}

std::unique_ptr<NvGIFGlobalInfo> NvGIFGlobalInfo::MakeReaderDefault() {
    auto info = std::make_unique<NvGIFGlobalInfo>();
    info->mVersionFlag = 1;
    info->mColorResolution = 8;
    return info;
}

NvColor NvGIFGlobalInfo::GetBackgroundColor() const {
    const bool namesOne = mHasGlobalTable && mBackgroundIndex < mColorTable.GetSize();
    return namesOne ? mColorTable.GetColor(mBackgroundIndex) : NvColor{};
}

std::unique_ptr<NvImgFmtFrameInfo> NvGIFFrameInfo::Clone() const {
    return std::make_unique<NvGIFFrameInfo>(*this);
}
