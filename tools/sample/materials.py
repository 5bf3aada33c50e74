"""Material libraries and tables: text that users edit by hand."""

from sample import product

_PROPERTIES = ("Density", "YoungModulus", "PoissonRatio", "YieldStrength", "TensileStrength",
               "ThermalConductivity", "SpecificHeat", "Hardness", "Roughness", "Reflection")


def material_file(rng, name):
    rows = "".join(f"  <{prop} unit=\"SI\">{rng.uniform(0, 1000):.5f}</{prop}>\r\n"
                   for prop in _PROPERTIES)
    texture = rf"C:\Users\{product.OTHER_USER}\Pictures\{name}.bmp"
    text = (f'<?xml version="1.0" encoding="UTF-8"?>\r\n<Material name="{name}">\r\n{rows}'
            f"  <Texture>{texture}</Texture>\r\n</Material>\r\n")
    return text.encode()


def table_file(rng, title, rows, encoding="utf-8"):
    """A table with one row of numbers per line, as the sheet-metal and thread tables are."""
    lines = [f"; {title}", "Thickness;Radius;Angle;Deduction;Note"]
    for index in range(rows):
        numbers = ";".join(f"{rng.uniform(0, 100):.3f}" for _ in range(4))
        lines.append(f"{numbers};行{index}")
    return ("\r\n".join(lines) + "\r\n").encode(encoding)
