"""Dead links in a directory of HTML: files and anchors that are not there. Links to other places are not followed."""
import html.parser
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = set(), set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src") and value:
                self.links.add(value)
            elif name in ("id", "name") and value:
                self.anchors.add(value)


def check(directory):
    """Prints each dead link; returns how a program is to end."""
    found = {path.resolve(): Page(path) for path in directory.rglob("*.html")}
    dead, counted = [], 0
    for path, page in found.items():
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            counted += 1
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            anchor = urllib.parse.unquote(parts.fragment)
            if not target.is_file() or (anchor and target in found and anchor not in found[target].anchors):
                dead.append(f"{path.name}: {link}")
    for each in sorted(dead):
        print(f"dead link in {each}", file=sys.stderr)
    print(f"{len(found)} pages, {counted} links, {len(dead)} dead")
    return 1 if dead or not counted else 0
