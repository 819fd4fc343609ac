#!/usr/bin/env python3
"""Checks the help's sources: every link, picture, contents and index entry leads somewhere, every
topic is in the contents, every picture is shown, and the project names every file."""
import html.parser
import pathlib
import sys
import urllib.parse

TOPICS = pathlib.Path(__file__).resolve().parent.parent / "help" / "topics"
PARTS = {"a": "href", "img": "src", "link": "href"}


class Page(html.parser.HTMLParser):
    """What a page, or a sitemap, refers to, and the places in it that can be referred to."""

    def __init__(self, path):
        super().__init__()
        self.anchors, self.targets, self.title = set(), [], ""
        self.in_title = False
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        attrs = {name: value or "" for name, value in attrs}
        self.in_title = tag == "title"
        self.anchors |= {attrs[name] for name in ("id", "name") if name in attrs and tag != "param"}
        if PARTS.get(tag) in attrs:
            self.targets.append(attrs[PARTS[tag]])
        if tag == "param" and attrs.get("name", "").lower() == "local":
            self.targets.append(attrs.get("value", ""))

    def handle_data(self, data):
        if self.in_title:
            self.title += data.strip()

    def handle_endtag(self, tag):
        self.in_title = False


def main():
    files = {str(path.relative_to(TOPICS)): path for path in TOPICS.rglob("*") if path.is_file()}
    pages = {name: Page(path) for name, path in files.items()
             if path.suffix in (".html", ".hhc", ".hhk")}
    faults = [f"{name}: no title" for name, page in pages.items()
              if name.endswith(".html") and not page.title]
    reached = set()
    for name, page in pages.items():
        for target in page.targets:
            link = urllib.parse.urlsplit(target)
            to = urllib.parse.unquote(link.path) or name
            reached.add((pathlib.Path(name).suffix, to))
            if link.scheme or to not in files:
                faults.append(f"{name}: {target} isn't a file of the help")
            elif link.fragment and link.fragment not in pages[to].anchors:
                faults.append(f"{name}: {target} isn't a place in that topic")
    project = files["rillbook.hhp"].read_text(encoding="utf-8")
    listed = set(project.partition("[FILES]")[2].split())
    for name in sorted(files):
        suffix = pathlib.Path(name).suffix
        if suffix == ".html" and (".hhc", name) not in reached:
            faults.append(f"{name}: not in the contents")
        if suffix == ".png" and (".html", name) not in reached:
            faults.append(f"{name}: no topic shows it")
        if suffix in (".html", ".png", ".css") and name not in listed:
            faults.append(f"{name}: not in the project's list of files")
    faults += [f"rillbook.hhp: {name} isn't there" for name in sorted(listed - files.keys())]
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
