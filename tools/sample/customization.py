"""Ribbon, menu and shortcut-key files as the product writes them."""

from xml.sax.saxutils import escape

from sample import product
from sample.ribbon import RibbonElement, element_text

_DECLARATION = '<?xml version="1.0" encoding="{}"?>\r\n'
_COMMANDS = ("Extrude", "Revolve", "Sweep", "Loft", "Fillet", "Chamfer", "Shell", "Draft", "Rib",
             "Hole", "Pattern", "Mirror", "Sketch", "Dimension", "Measure", "Section")
_TITLES = {"en-us": ("Part", "Surface", "Assembly", "Sheet Metal", "Drawing", "Tools"),
           "zh-cn": ("零件", "曲面", "装配", "钣金", "工程图", "工具")}

# A panel that the user made in an older version and the running one does not have.
_OWN_PANEL = 80


def ribbon_file(rng, version, language, user):
    """A ribbon with its states, categories and panels; newer versions have more of each."""
    states = [_state(rng, version, language, number) for number in range(3)]
    return _document(version, [
        _element("Major", version.split(".")[0]), _element("Minor", "0"),
        _element("Size", len(states)), *states,
        _element("Release", f"{product.PRODUCT} {product.year_of(version)}"),
        _element("IconPath", rf"C:\Users\{product.OTHER_USER}\Pictures\icon.bmp"),
        _element("UserIconPath", f"C:/Users/{user}/Pictures/icon.bmp")])


def menu_file(rng, version, language):
    """Nested menus, in UTF-16 as the menu editor saves them."""
    menus = [_group("Menu", f"{title}(&{title[0]})", rng) for title in _TITLES[language]]
    return _document(version, [_element("Language", language), *menus], "UTF-16")


def shortcut_file(rng, version, count):
    """An accelerator table; its element bears the product's name and version."""
    commands = rng.sample(range(100, 100 + 40 * count), count)
    entries = [_element_of(f"Accels-{index}", [
        _element("Command", command),
        _element("Ctrl", rng.choice((0, 4, 8, 12, 16))),
        _element("Key", rng.choice((*range(48, 91), *range(112, 124))))])
        for index, command in enumerate(commands)]
    table = _element_of(product.PRODUCT + version, [_element("Count", count), *entries])
    return _encoded("UTF-8", _element_of("Accelerators", [table]))


def _state(rng, version, language, number):
    titles = _TITLES[language]
    categories = [_category(rng, version, title, 10 * number + index)
                  for index, title in enumerate(titles[number:number + 4])]
    return _element_of(f"EyeRibbonState-{number}", [
        _element("ID", number + 1), _element("Name", f"State {number}"),
        _element("Size", len(categories)), *categories])


def _category(rng, version, title, number):
    panels = [_panel(rng, title, 100 * number + index)
              for index in range(int(float(version)) - 24)]
    if version != product.RUNNING_VERSION:
        panels.append(_panel(rng, "我的 " + title, 100 * number + _OWN_PANEL))
    return _element_of(f"EyeCustomRibbonCategory-{number}", [
        _element("ID", number + 1), _element("Name", title), _element("Caption", title + " *"),
        _element("UserDefine", number % 2), _element("Size", len(panels)), *panels])


def _panel(rng, title, number):
    elements = [_element(f"RibbonElement-{index}", element_text(_button(rng, title, depth=2)))
                for index in range(rng.randrange(2, 5))]
    return _element_of(f"EyeCustomRibbonPanel-{number}", [
        _element("ID", number + 1), _element("Name", f"{title} {number}"),
        _element("Style", rng.randrange(4)), _element("UserDefine", 1),
        _element("UserDefinePanelID", 50000 + number), _element("CollapseOrder", number),
        _element("IsAutoFindPanelIcon", rng.randrange(2)), *elements])


def _button(rng, title, depth):
    command = rng.choice(_COMMANDS)
    children = [_button(rng, title, depth - 1) for _ in range(rng.randrange(depth + 1))]
    return RibbonElement(
        kind=rng.randrange(-1, 6), id=rng.randrange(1 << 32), text1=command,
        value2=rng.randrange(1 << 16), text2=f"{title} - {command}", children=children,
        value3=rng.randrange(-1, 100), text3=f"{command} 😀" if depth == 0 else "",
        text4=command * 20 if rng.randrange(8) == 0 else "")


def _group(kind, title, rng):
    items = [_element_of("Item", [_element("Command", rng.randrange(100, 9000)),
                                  _element("Caption", f"{name} {title}")])
             for name in rng.sample(_COMMANDS, 8)]
    return _element_of(kind, [_element("Title", title), *items])


def _document(version, children, encoding="UTF-8"):
    return _encoded(encoding, _element_of(product.PRODUCT + version, children))


def _encoded(encoding, root):
    text = _DECLARATION.format(encoding) + root + "\r\n"
    return b"\xff\xfe" + text.encode("utf-16-le") if encoding == "UTF-16" else text.encode()


def _element(name, value):
    return f"<{name}>{escape(str(value))}</{name}>"


def _element_of(name, children):
    return f"<{name}>\r\n" + "".join(child + "\r\n" for child in children) + f"</{name}>"
