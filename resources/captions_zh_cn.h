#pragma once

// What the resources in simplified Chinese have of their own, under the names that the English ones
// have in captions_en_us.h.

#define CARROVAN_LANGUAGE LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED
#define CARROVAN_STRINGS "strings_zh_cn.inc"

#define CAPTION_BACK "上一步(&B)"
#define CAPTION_NEXT "下一步(&N)"
#define CAPTION_FINISH "完成"
#define CAPTION_CANCEL "取消"
#define CAPTION_PATH_TITLE "导入新设置"
#define CAPTION_PATH_FILE "请选择文件路径"
#define CAPTION_PATH_SELECT "选择文件"
#define CAPTION_PATH_VERSION "请选择要导入到的版本"
#define CAPTION_ABOUT "关于 Carrovan"
#define CAPTION_ABOUT_NAME "导入和导出设置向导"
#define CAPTION_ABOUT_PURPOSE \
  "在 Vantric CAD 产品的不同版本之间、不同计算机之间迁移用户的设置，并可将其恢复为默认值。"
#define CAPTION_OK "确定"
