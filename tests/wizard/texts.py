"""The texts of the wizard as they stand in the sources, by number and by caption."""

import re

from wizard import ROOT

_RESOURCES = ROOT / "resources"


def listed_texts(name):
    """The texts of a list of resources/ by their numbers."""
    lines = (_RESOURCES / name).read_text(encoding="utf-8")
    return {int(number): text.replace("\\n", "\n") for number, text in
            re.findall(r'^CARROVAN_STRING\((\d+), \w+, "(.*)"\)$', lines, re.MULTILINE)}


def captions(file):
    """The dialogs' captions of a header by their names, without their common beginning."""
    lines = file.read_text(encoding="utf-8")
    return dict(re.findall(r'^#define CAPTION_(\w+)[\s\\]+"(.*)"$', lines, re.MULTILINE))


ENGLISH, CHINESE = listed_texts("strings.inc"), listed_texts("strings_zh_cn.inc")
CHINESE_CAPTIONS = captions(_RESOURCES / "captions_zh_cn.h")
MARKED_CAPTIONS = captions(ROOT / "tests" / "windows" / "captions_marked.h")
