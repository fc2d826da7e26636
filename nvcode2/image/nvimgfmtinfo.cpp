#include "nvcode2/image/nvimgfmtinfo.h"

NvImgFmtGlobalInfo::~NvImgFmtGlobalInfo() = default;
NvImgFmtFrameInfo::~NvImgFmtFrameInfo() = default;
