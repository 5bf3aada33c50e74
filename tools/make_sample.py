#!/usr/bin/env python3
"""Makes the sample: a made-up CAD product with years of a user's settings, for trying out, testing
and measuring Carrovan. The same seed gives the same bytes and the same modification times."""

import argparse
import os
import pwd
import sys

from sample.sandbox import fill_sandbox
from sample.wine_prefix import fill_prefix


def main():
    arguments = parse_arguments()
    user = arguments.user or pwd.getpwuid(os.getuid()).pw_name
    try:
        files, total_bytes = make(arguments, user)
    except OSError as error:
        print(f"make_sample: {error}", file=sys.stderr)
        return 1
    print(f"sample of user {user}: {files} files, {total_bytes / 1e6:.0f} MB in "
          f"{arguments.sandbox or arguments.wine}")
    return 0


def make(arguments, user):
    if arguments.sandbox:
        return fill_sandbox(arguments.sandbox, user, arguments.seed, arguments.scale)
    return fill_prefix(arguments.wine, user, arguments.seed, arguments.scale, arguments.programs)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    target = parser.add_mutually_exclusive_group(required=True)
    target.add_argument("--sandbox", metavar="DIR", help="lay a whole machine into this folder")
    target.add_argument("--wine", metavar="PREFIX", help="fill this Wine prefix")
    parser.add_argument("--programs", metavar="DIR",
                        help="copy Carrovan's programs and tarvik.dll from here into the "
                             "product's startup folder (with --wine)")
    parser.add_argument("--scale", type=positive, default=1,
                        help="1 is about 300 files and 30 MB, 10 ten times that (default 1)")
    parser.add_argument("--user", type=folder_name,
                        help="whose settings (default: the user who runs this, who is also Wine's "
                             "user)")
    parser.add_argument("--seed", type=int, default=1, help="another number, another sample")
    arguments = parser.parse_args()
    if arguments.programs and not arguments.wine:
        parser.error("--programs goes with --wine")
    return arguments


def positive(text):
    number = float(text)
    if not 0 < number < float("inf"):
        raise ValueError
    return number


def folder_name(text):
    """A user's name is the name of a folder whose product folders are replaced."""
    if text in ("", ".", "..") or set(text) & set('\\/:*?"<>|'):
        raise ValueError
    return text


if __name__ == "__main__":
    sys.exit(main())
