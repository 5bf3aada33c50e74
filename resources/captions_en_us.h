#pragma once

// What the resources in English have of their own: the captions of the dialogs, the list of texts
// and the language that all of them are stored under.

#define CARROVAN_LANGUAGE LANG_ENGLISH, SUBLANG_ENGLISH_US
#define CARROVAN_STRINGS "strings.inc"

#define CAPTION_BACK "&Back"
#define CAPTION_NEXT "&Next"
#define CAPTION_FINISH "Finish"
#define CAPTION_CANCEL "Cancel"
#define CAPTION_PATH_TITLE "Import new settings"
#define CAPTION_PATH_FILE "Please select the file path"
#define CAPTION_PATH_SELECT "Select File"
#define CAPTION_PATH_VERSION "Please select the imported version"
#define CAPTION_ABOUT "About Carrovan"
#define CAPTION_ABOUT_NAME "Import and Export Settings Wizard"
#define CAPTION_ABOUT_PURPOSE                                       \
  "Moves a user's settings of the Vantric CAD product between its " \
  "versions and between machines, and returns them to their defaults."
#define CAPTION_OK "OK"
