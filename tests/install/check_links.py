#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Every relative link in the pages below some directories leads somewhere: check_links.py [--root ROOT] PATH...
An absolute link leads below ROOT."""
import argparse
import functools
import html.parser
import pathlib
import re
import sys
import urllib.parse

MARKDOWN_LINK = re.compile(r'\]\(\s*<?([^)>\s]+)>?(?:\s+"[^"]*")?\)')
CODE = re.compile(r'^```.*?^```|`[^`\n]*`', re.M | re.S)
ELSEWHERE = re.compile(r'^(?:[a-z][a-z0-9+.-]*:|//)', re.I)


class Page(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.links, self.anchors = [], set()

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ('href', 'src') and value:
                self.links.append(value)
            elif name in ('id', 'name') and value:
                self.anchors.add(value)


def heading_anchors(text):
    """The names under which a page's headings are reached."""
    headings = re.findall(r'^#+\s+(.*)$', text, re.M)
    return {re.sub(r'[^\w\- ]', '', h.lower()).strip().replace(' ', '-') for h in headings}


@functools.lru_cache(None)
def read(path):
    """Links and anchors of a page."""
    text = path.read_text(encoding='utf-8')
    if path.suffix == '.md':
        return MARKDOWN_LINK.findall(CODE.sub('', text)), heading_anchors(text)
    page = Page()
    page.feed(text)
    return page.links, page.anchors


def broken(path, root):
    """(link, why) of each link of a page that leads nowhere, and how many it has."""
    links, own_anchors = read(path)
    wrong = []
    for link in links:
        if ELSEWHERE.match(link):
            continue
        target, _, anchor = link.partition('#')
        name = urllib.parse.unquote(target.partition('?')[0])
        there = (root / name.lstrip('/') if name.startswith('/') else path.parent / name) if name else path
        if not there.exists():
            wrong.append((link, 'is not there'))
        elif anchor and there.suffix in ('.md', '.html'):
            if urllib.parse.unquote(anchor) not in (own_anchors if there == path else read(there)[1]):
                wrong.append((link, 'has no such place'))
    return len(links), wrong


def pages(paths):
    for path in map(pathlib.Path, paths):
        yield from sorted(p for p in path.rglob('*') if p.suffix in ('.md', '.html')) if path.is_dir() else [path]


def main(arguments):
    parser = argparse.ArgumentParser()
    parser.add_argument('--root', type=pathlib.Path, default=pathlib.Path('/'))
    parser.add_argument('paths', nargs='+')
    options = parser.parse_args(arguments)
    number_of_pages = number_of_links = 0
    wrong = []
    for page in pages(options.paths):
        links, found = broken(page, options.root)
        number_of_pages, number_of_links = number_of_pages + 1, number_of_links + links
        wrong += [f'{page}: {link} {why}' for link, why in found]
    if wrong or not number_of_links:
        sys.exit('\n'.join(wrong) or 'no page has a link')
    print(f'{number_of_links} links in {number_of_pages} pages')


if __name__ == '__main__':
    main(sys.argv[1:])
