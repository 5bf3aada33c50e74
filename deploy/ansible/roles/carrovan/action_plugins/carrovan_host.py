"""Does one thing on a host by its SSH connection. The host needs nothing but its own shell, cmd:
neither Python nor PowerShell.

command: TEXT            runs a command; the result has rc, stdout and stderr
put: FILE, to: PATH      copies a file of the control machine to the host
text: TEXT, to: PATH     makes a file of the host of a text, with Windows' line ends
encoding: NAME           of that text; UTF-8 when it is left out
fetch: PATH, to: FILE    copies a file of the host to the control machine

Paths of a host are relative to the profile folder of the account, with slashes. A host that does
not answer has failed with a message like any other, so that the play can note it.
"""

import os
import tempfile

from ansible.errors import AnsibleConnectionFailure, AnsibleError
from ansible.module_utils.common.text.converters import to_native, to_text
from ansible.plugins.action import ActionBase


class ActionModule(ActionBase):
    TRANSFERS_FILES = False

    def run(self, tmp=None, task_vars=None):
        result = super().run(tmp, task_vars)
        try:
            result.update(self._do(self._task.args))
        except AnsibleConnectionFailure as error:
            result.update(failed=True, msg=f"the host does not answer: {to_native(error)}")
        return result

    def _do(self, arguments):
        if "command" in arguments:
            return self._command(arguments["command"])
        if "put" in arguments:
            return self._put(self._find_needle("files", arguments["put"]), arguments["to"])
        if "text" in arguments:
            return self._put_text(arguments["text"], arguments.get("encoding", "utf-8"),
                                  arguments["to"])
        if "fetch" in arguments:
            return self._fetch(arguments["fetch"], arguments["to"])
        raise AnsibleError("carrovan_host wants one of command, put, text and fetch")

    def _command(self, command):
        # A terminal would mix output and errors, and Windows would draw on it.
        status, output, errors = self._connection.exec_command(command, sudoable=False)
        output, errors = (to_text(text, errors="replace") for text in (output, errors))
        result = {"rc": status, "stdout": output, "stderr": errors, "changed": True}
        if status != 0:
            result["msg"] = f"{command} ended with {status}. {errors or output}".strip()
        return result

    def _put(self, file, to):
        self._connection.put_file(file, to)
        return {"changed": True}

    def _put_text(self, text, encoding, to):
        lines = text.replace("\r\n", "\n").replace("\n", "\r\n")
        with tempfile.NamedTemporaryFile() as file:
            file.write(lines.encode(encoding))
            file.flush()
            return self._put(file.name, to)

    def _fetch(self, path, to):
        os.makedirs(os.path.dirname(to), exist_ok=True)
        self._connection.fetch_file(path, to)
        return {"changed": False}
