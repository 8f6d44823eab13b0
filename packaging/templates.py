"""Text templates with @NAME@ placeholders."""

import re


def fill(template, values):
    """The text with every @NAME@ replaced; a name without a value is an error."""
    return re.sub(r"@([A-Z][A-Z0-9_]*)@", lambda match: values[match[1]],
                  template.read_text(encoding="utf-8"))


def windows_text(text):
    return text.replace("\n", "\r\n").encode()
