#pragma once

// A language of the tests. Each caption is a mark, which shows where the text is from.

#define CARROVAN_LANGUAGE LANG_ENGLISH, SUBLANG_ENGLISH_US

#define CAPTION_BACK "«back»"
#define CAPTION_NEXT "«next»"
#define CAPTION_FINISH "«finish»"
#define CAPTION_CANCEL "«cancel»"
#define CAPTION_PATH_TITLE "«path title»"
#define CAPTION_PATH_FILE "«path file»"
#define CAPTION_PATH_SELECT "«path select»"
#define CAPTION_PATH_VERSION "«path version»"
#define CAPTION_ABOUT "«about»"
#define CAPTION_ABOUT_NAME "«about name»"
#define CAPTION_ABOUT_PURPOSE "«about purpose»"
#define CAPTION_OK "«ok»"
