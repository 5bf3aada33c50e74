"""The file that says who the product is: a sandbox's product.ini, the library's tarvik.ini."""

from sample import product


def identity_file(user=None):
    """The user's name is only for a machine that has no user of its own."""
    facts = {
        "CompanyShortName": product.COMPANY,
        "ProductName": product.PRODUCT,
        "ProductVersion": product.RUNNING_VERSION,
        "HumanReadableVersion": product.RUNNING_YEAR,
        "StartupFolder": product.windows_path(product.STARTUP_FOLDER),
        "Language": "en-us",
    }
    if user is not None:
        facts["UserName"] = user
    lines = ["[Product]"] + [f"{name}={value}" for name, value in facts.items()]
    return "".join(line + "\r\n" for line in lines).encode()
