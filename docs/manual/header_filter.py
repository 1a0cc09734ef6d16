#!/usr/bin/env python3
"""Turns a public header's comments into Doxygen's, for Doxygen's INPUT_FILTER: header_filter.py HEADER

The headers stay as a programmer reads them: a comment before a declaration, in it a line "   name  in; text" for each
argument, and a head comment with the arguments and results that a header's functions have in common. Here each function
gets all of that, its bytes on the wire, and its place in the manual.
"""
import html
import json
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1] / 'src'

COMMENT = re.compile(r'^/\*(.*?)\*/\n', re.DOTALL | re.MULTILINE)
ITEM = re.compile(r'^ {3}(\S(?:.*?\S)?)  +(\S.*)$')
FUNCTION = re.compile(r'^(?:GWQ_API|static inline) [^;{]*?(\w+)\(([^;{]*)\)[^;{]*[;{]', re.MULTILINE)
DATUM = re.compile(r'^GWQ_API extern [^;(]*;', re.MULTILINE)
DIRECTION = re.compile(r'^(in/out|in and out|in|out)(?:[;,] |$)')
VERBATIM = '\0'  # before each verbatim line of an item
STATUS = re.compile(r'(?<![\w.-])-(\d{1,3})(?![\w.])')
SIGN_IS_STATUS = ('frame', 'links', 'files', 'pinpad', 'screens')


def statuses():
    """{'-14': 'GWQ_REFUSED', ...}"""
    codes = (SOURCE / 'status_codes.h').read_text(encoding='utf-8')
    listed = re.search(r'enum GwqStatus \{(.*?)\};', codes, re.DOTALL)[1]
    return {value: name for name, value in re.findall(r'(GWQ_\w+) =\s+(-?\d+)', listed)}


def exported_names():
    headers = re.findall(r'^  (\w+/\w+\.h|\w+\.h)$', (SOURCE / 'CMakeLists.txt').read_text(encoding='utf-8'), re.M)
    return {m[1] for h in headers for m in FUNCTION.finditer((SOURCE / h).read_text(encoding='utf-8'))}


def groups():
    return json.loads((HERE / 'groups.json').read_text(encoding='utf-8'))


def group_of(name, header):
    by_name = [g['id'] for g in groups() if name in g.get('functions', [])]
    return (by_name or [g['id'] for g in groups() if header in g['headers']])[0]


def wire():
    """{function: [(sent, answer, wait), ...]}"""
    table = {}
    for line in (HERE / 'wire.tsv').read_text(encoding='utf-8').splitlines():
        if not line.startswith('#'):
            function, *step = line.split('\t')
            table.setdefault(function, []).append(step)
    return table


class Comment:
    """A comment's paragraphs, items ("   name  text") and verbatim lines, in order."""

    def __init__(self, text):
        self.parts = []  # ('text', str), ('item', name, str), ('pre', [str])
        self.column = None
        for line in text.strip('\n').split('\n'):
            self.take(re.sub(r'^ \*', '', line).rstrip())
        self.parts = [p for p in self.parts if p[-1]]

    def take(self, line):
        indent = len(line) - len(line.lstrip())
        item = ITEM.match(line)
        last = self.parts[-1] if self.parts else None
        if not line:
            self.column = None
            self.parts.append(('text', ''))
        elif item:
            self.column = item.start(2)
            self.parts.append(('item', item[1], item[2]))
        elif indent > 3 and (self.column is None or indent > self.column + 3):
            if last and last[0] == 'pre':
                last[1].append(line)
            elif last and last[0] == 'item':
                self.parts[-1] = ('item', last[1], last[2] + VERBATIM + line)
            else:
                self.parts.append(('pre', [line]))
        elif indent > 3 and last and last[0] == 'item':
            self.parts[-1] = ('item', last[1], last[2] + ' ' + line.strip())
        elif last and last[0] == 'text' and last[1]:
            self.parts[-1] = ('text', last[1] + ' ' + line.strip())
        else:
            self.column = None
            self.parts.append(('text', line.strip()))

    def items(self):
        return [(names.split(','), text) for kind, names, text in (p for p in self.parts if p[0] == 'item')]

    def after(self, title):
        """The parts behind a paragraph that begins with a title, up to the next paragraph."""
        found = []
        for part in self.parts:
            if part[0] == 'text':
                if found:
                    break
                collecting = part[1].startswith(title)
            elif collecting:
                found.append(part)
        return found


class Head:
    """What the functions of a header have in common."""

    def __init__(self, comment):
        self.comment = comment
        self.arguments = {n.strip(): text for _, names, text in
                          (p for p in comment.after('Common arguments') if p[0] == 'item') for n in names.split(',')}
        self.results = [(p[1], p[2]) for p in comment.after('Common results') if p[0] == 'item']
        inline = [p[1] for p in comment.parts if p[0] == 'text' and p[1].startswith('Common results: ')]
        self.results += [('0', 'success'), ('others', inline[0].split(': ', 1)[1])] if inline else []
        texts = [p[1] for p in comment.parts if p[0] == 'text']
        self.remarks = [t for t in texts[1:] if not t.startswith('Common ')]


class Writer:
    def __init__(self, header):
        self.header = header
        self.names = exported_names()
        self.statuses = statuses()

    def text(self, text, links_statuses=False):
        """Escaped for Doxygen; `code` and names become links."""
        text, *verbatim = text.split(VERBATIM)
        text = re.sub(r'([\\@#%])', r'\\\1', html.escape(text, quote=False))
        text = re.sub(r'`([^`]*)`', r'<code>\1</code>', text)
        text = re.sub(r'(?<![\w/])(\w+)(?![\w/(]|\.\w)', lambda m: '#' + m[1] if m[1] in self.names - {'min'} else m[1], text)
        if links_statuses and self.header.split('/')[0] in SIGN_IS_STATUS:
            text = STATUS.sub(self.status_link, text)
        return text + (self.part(('pre', verbatim)) if verbatim else '')

    def status_link(self, match):
        number = match[0]
        return f'@ref status{number[1:]} "{number}"' if number in self.statuses else number

    def part(self, part):
        if part[0] == 'pre':
            indent = min(len(line) - len(line.lstrip()) for line in part[1])
            return '<pre>' + '\n'.join(self.text(line[indent:]) for line in part[1]) + '</pre>'
        if part[0] == 'item':
            return f'<dl><dt>{self.text(part[1], True)}</dt><dd>{self.text(part[2], True)}</dd></dl>'
        return self.text(part[1]) + '\n'

    def definitions(self, rows):
        cells = ''.join(f'<tr><td>{self.text(a, True)}</td><td>{self.text(b, True)}</td></tr>' for a, b in rows)
        return f'<table>{cells}</table>'

    def wire_table(self, steps):
        rows = ''.join('<tr>' + ''.join(f'<td>{self.text(cell)}</td>' for cell in (str(n), *step)) + '</tr>'
                       for n, step in enumerate(steps, 1))
        return ('@par On the wire\n<table><tr><th></th><th>To the terminal</th><th>Answer</th><th>Waits</th></tr>'
                f'{rows}</table>\n')


def parameters_of(text):
    """[(name, declaration)]; a function pointer or an array is none of the headers' arguments."""
    return [(re.search(r'(\w+)\W*$', p)[1], p) for p in text.split(',') if p.strip() not in ('', 'void', '...')]


def split_results(paragraph):
    """A paragraph's prose, and what it tells of results."""
    match = re.search(r'(?:^|(?<=[.;] ))(Returns? |Also )', paragraph)
    return (paragraph[:match.start()].strip(), paragraph[match.start():]) if match else (paragraph, '')


class Function:
    def __init__(self, name, parameters, comment, own_names):
        self.name, self.parameters, self.comment = name, parameters, comment
        self.own = {}
        self.body = []
        self.results = []
        for part in comment.parts:
            if part[0] == 'item' and any(n.strip() in own_names for n in part[1].split(',')):
                self.own.update({n.strip(): part[2] for n in part[1].split(',')})
            elif part[0] == 'text':
                prose, results = split_results(part[1])
                self.body += [('text', prose)] if prose else []
                self.results += [results] if results else []
            else:
                self.body.append(part)
        self.whole = ' '.join(p[1] for p in comment.parts if p[0] == 'text')


class Manual:
    def __init__(self, header, text):
        self.header = header
        self.writer = Writer(header)
        self.functions = {}
        first, *_ = COMMENT.finditer(text)
        self.head = Head(Comment(first[1]))
        self.wire = wire()

    def description(self, function, name, seen=()):
        """What the headers say of an argument; None if nothing."""
        common = self.head.arguments.get(name)
        own = function.own.get(name)
        if own and common and not DIRECTION.match(own):
            return common + '; ' + own
        if own:
            return own
        for other in re.findall(r'\w+', function.whole):
            if other in self.functions and other not in (function.name, *seen):
                found = self.description(self.functions[other], name, (*seen, function.name))
                if found and found != common:
                    return found
        if common or not name.startswith('ignored'):
            return common
        return 'not read'

    def parameter(self, function, name, declaration):
        description = self.description(function, name)
        if description is None:
            return ''  # Doxygen complains
        direction = 'in'
        match = DIRECTION.match(description)
        if match:
            direction = {'in': 'in', 'out': 'out'}.get(match[1], 'in,out')
            description = description[match.end():] or ('a text' if 'char' in declaration else 'the value')
        elif description.startswith('in:'):
            direction = 'in,out'
        return f'@param[{direction}] {name} {self.writer.text(description)}\n'

    def returned(self, function):
        rows = [] if any(r.startswith('Returns') and 'in place of' not in r for r in function.results) else self.head.results
        texts = [self.writer.text(r, True) for r in function.results]
        if not texts and not rows:
            texts = [self.writer.text(function.body[0][1], True)]
        return '@return ' + (self.writer.definitions(rows) if rows else '') + ' '.join(texts) + '\n'

    def function(self, function, result):
        parts = [self.writer.part(p) for p in function.body] or [function.results[0]]
        brief, _, rest = parts[0].partition('. ')
        lines = [f'@ingroup {group_of(function.name, self.header)}\n@brief {brief.strip().rstrip(".")}.\n\n{rest}', *parts[1:]]
        lines += [self.parameter(function, *p) for p in function.parameters]
        if not re.match(r'(GWQ_API )?void $', result):
            lines.append(self.returned(function))
        lines += [f'@remark {self.writer.text(r)}\n' for r in self.head.remarks]
        if function.name in self.wire:
            lines.append(self.writer.wire_table(self.wire[function.name]))
        return '/** ' + '\n'.join(line for line in lines if line) + '*/\n'

    def block(self, comment, code):
        """A comment and the declarations behind it, up to an empty line."""
        found = list(FUNCTION.finditer(code))
        if found:
            return self.function_block(comment, code, found)
        text = '\n'.join(self.writer.part(p) for p in comment.parts)
        data = list(DATUM.finditer(code))
        if not data:
            return f'/** {text}*/\n' + members(code)
        names = [re.search(r'(\w+)(\[\w*\])*;', d[0])[1] for d in data]
        return ''.join(f'/** @ingroup {group_of(n, self.header)}\n{text}*/\n{d[0]}\n' for n, d in zip(names, data))

    def function_block(self, comment, code, found):
        own_names = {n for f in found for n, _ in parameters_of(f[2])}
        out, end = [], 0
        for match in found:
            function = Function(match[1], parameters_of(match[2]), comment, own_names)
            self.functions[function.name] = function
            result = match[0][:match[0].index(match[1] + '(')]
            out += [code[end:match.start()], self.function(function, result), match[0]]
            end = match.end()
        return ''.join(out) + code[end:]

    def head_block(self):
        text = '\n'.join(self.writer.part(p) for p in self.head.comment.parts)
        return f'/** @file\n{text}*/\n'


def members(code):
    return re.sub(r'/\* (.*?) \*/', r'/**< \1 */', code, flags=re.DOTALL)


def transformed(header, text):
    manual = Manual(header, text)
    out, end = [], 0
    for match in COMMENT.finditer(text):
        out.append(text[end:match.start()])
        if end == 0:
            out.append(manual.head_block())
            end = match.end()
            continue
        behind = text.find('\n\n', match.end())
        end = behind + 1
        out.append(manual.block(Comment(match[1]), text[match.end():end]))
    return ''.join(out) + text[end:]


if __name__ == '__main__':
    path = pathlib.Path(sys.argv[1]).resolve()
    sys.stdout.write(transformed(str(path.relative_to(SOURCE)), path.read_text(encoding='utf-8')))
