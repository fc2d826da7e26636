#include "nvcode2/nvimgfmtinfo.h"

NvImgFmtGlobalInfo::~NvImgFmtGlobalInfo() = default;
NvImgFmtFrameInfo::~NvImgFmtFrameInfo() = default;
