"""A page of the help as these tests need it: its elements, its links and the names that they reach."""

from html.parser import HTMLParser


class HelpPage(HTMLParser):
    def __init__(self, content):
        super().__init__()
        self.elements = []  # of each its name and its attributes
        self.feed(content.decode("utf-8"))
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append((tag, dict(attrs)))

    def values_of(self, *attributes):
        return [values[name] for _, values in self.elements
                for name in attributes if name in values]
