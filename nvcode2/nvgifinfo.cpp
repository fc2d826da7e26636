#include "nvcode2/nvgifinfo.h"

#include <utility>

NvGIFGlobalInfo::~NvGIFGlobalInfo() {
    for (const NvList::Node* node = mComments.GetFirst(); node; node = node->GetNext())
        delete static_cast<NvGIFComment*>(node->GetElement());
}

std::unique_ptr<NvGIFGlobalInfo> NvGIFGlobalInfo::Clone() const {
    auto copy = std::make_unique<NvGIFGlobalInfo>();
    copy->mColorTable = mColorTable;
    copy->mVersionFlag = mVersionFlag;
    copy->mHasGlobalTable = mHasGlobalTable;
    copy->mColorResolution = mColorResolution;
    copy->mDeclaredTableSize = mDeclaredTableSize;
    copy->mSortFlag = mSortFlag;
    copy->mBackgroundIndex = mBackgroundIndex;
    copy->mHasLoop = mHasLoop;
    copy->mLoopCount = mLoopCount;
    copy->mAspect = mAspect;
    for (const NvList::Node* node = mComments.GetFirst(); node; node = node->GetNext())
        copy->AppendComment(static_cast<const NvGIFComment*>(node->GetElement())->mText);
    return copy;
}

std::unique_ptr<NvGIFGlobalInfo> NvGIFGlobalInfo::MakeReaderDefault() {
    auto info = std::make_unique<NvGIFGlobalInfo>();
    info->mVersionFlag = 1;
    info->mColorResolution = 8;
    return info;
}

void NvGIFGlobalInfo::AppendComment(std::string inText) {
    auto comment = std::make_unique<NvGIFComment>();
    comment->mText = std::move(inText);
    mComments.Append(comment.get());
    comment.release();
}

NvColor NvGIFGlobalInfo::GetBackgroundColor() const {
    const bool namesOne = mHasGlobalTable && mBackgroundIndex < mColorTable.GetSize();
    return namesOne ? mColorTable.GetColor(mBackgroundIndex) : NvColor{};
}

std::unique_ptr<NvImgFmtFrameInfo> NvGIFFrameInfo::Clone() const {
    return std::make_unique<NvGIFFrameInfo>(*this);
}
