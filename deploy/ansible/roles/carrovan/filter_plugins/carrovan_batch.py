"""Words for a batch file."""

from ansible.errors import AnsibleFilterError

_CONTROL = {chr(code) for code in range(32)}


def batch_word(text):
    """The text as one argument of a program, taken as it is: no variable in it is replaced, and
    no character of it means something to cmd."""
    text = str(text)
    if _CONTROL & set(text) or '"' in text:
        raise AnsibleFilterError(f"{text!r} holds what no argument on Windows may: a quote, a line "
                                 "end or another control character")
    # In front of the closing quote a backslash would quote it.
    end = len(text) - len(text.rstrip("\\"))
    return '"' + (text + "\\" * end).replace("%", "%%") + '"'


class FilterModule:
    def filters(self):
        return {"carrovan_batch_word": batch_word}
