#!/usr/bin/env python3
"""check_links.py SITE: every link and picture of the site leads somewhere inside it, anchors included,
and none was left as text."""
import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    """The anchors of a page and what it points at."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.targets = set(), set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_data(self, data):
        if "@ref" in data:
            self.targets.add(data.strip())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src") and value:
                self.targets.add(value)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    site = pathlib.Path(sys.argv[1])
    pages = {path: Page(path) for path in site.glob("*.html")}
    broken = []
    for path, page in pages.items():
        for target in page.targets:
            url = urllib.parse.urlsplit(target)
            if url.scheme or url.netloc or target.startswith("javascript"):
                continue
            file = site / urllib.parse.unquote(url.path) if url.path else path
            anchors = pages[file].anchors if file in pages else {url.fragment}
            if not file.exists() or (url.fragment and url.fragment not in anchors):
                broken.append(f"{path.name}: {target}")
    print("\n".join(sorted(broken)) or f"{len(pages)} pages, no broken link")
    sys.exit(bool(broken) or not pages)


if __name__ == "__main__":
    main()
