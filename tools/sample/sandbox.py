"""The sample as a machine kept in a folder."""

from pathlib import Path

from sample.identity import identity_file
from sample.layout import lay_files
from sample.registry_content import CURRENT_USER, LOCAL_MACHINE, machine_keys, user_keys
from sample.registry_text import render


def fill_sandbox(root, user, seed, scale):
    root = Path(root)
    registry = root / "registry"
    registry.mkdir(parents=True, exist_ok=True)
    (registry / f"{CURRENT_USER}.reg").write_bytes(render(user_keys(user, seed)))
    (registry / f"{LOCAL_MACHINE}.reg").write_bytes(render(machine_keys()))
    (root / "product.ini").write_bytes(identity_file(user))
    return lay_files(root / "C", user, seed, scale)
