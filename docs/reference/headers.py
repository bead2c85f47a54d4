# SPDX-License-Identifier: Apache-2.0
"""The public headers as data: what each function, table and record is, in the words of its docstring."""
import os
import re
from dataclasses import dataclass, field

WIDTH = {"zarnnetchange": 120}  # where the lines of a header's texts are broken; 100 elsewhere


@dataclass
class Entry:
    """A function or table: its declaration and the parts of its docstring."""
    name: str
    header: str
    declaration: str
    parameters: list  # (type, name)
    text: list = field(default_factory=list)  # paragraphs; one that is code begins with four blanks
    documented: dict = field(default_factory=dict)  # parameter: text
    result: str = ""
    group: tuple = ("", [])  # title and paragraphs of the part of the header that it stands in

    @property
    def returns(self):
        return re.match(r"(.*?)\b" + self.name, self.declaration, re.S)[1].replace("extern", "").strip()

    @property
    def is_function(self):
        return "(" in self.declaration


def lines_of(comment):
    """The text of a comment without its frame."""
    body = re.sub(r"^/\*+|\*+/$", "", comment.strip())
    return [re.sub(r"^\s*\* ?", "", line).rstrip() for line in body.split("\n")]


def paragraphs_of(lines, width):
    """Joins lines to paragraphs: at an empty line, and where a line ended though the next word had room."""
    done, last = [], ""
    for line in lines:
        code = line.startswith("    ")
        item = re.match(r" *- ", line)
        if not line.strip():
            done.append("")
        elif code and (not done or not done[-1] or done[-1].startswith("    ")):
            done[-1:] = [(done[-1] + "\n" if done and done[-1] else "") + line]
        elif not done or not done[-1] or item or len(last) + len(line.split()[0]) + 4 <= width:
            done.append(line.strip())
        else:
            done[-1] += " " + line.strip()
        last = line
    return [paragraph for paragraph in done if paragraph]


def parse_docstring(entry, comment, width):
    """Splits a docstring at its @param and @return. What follows one of them and is not indented, though it had room in
    the line before, is of the function again."""
    parts, kind = [["", []]], 0
    indent = None
    for line in lines_of(comment):
        pieces = re.split(r"(?:^|(?<=[.?!)\]]) |(?<=\w) )(?=@(?:param|return)\b)", line)
        for number, piece in enumerate(pieces):
            if number > 0 or piece.startswith("@"):
                parts.append([piece.split()[0], [re.sub(r"^@\w+\s*", "", piece)]])
                indent = None
                kind = len(line)
            elif parts[-1][0] and piece:
                own = len(piece) - len(piece.lstrip())
                indent = own > 0 if indent is None else indent
                fits = kind + len(piece.split()[0]) + 4 <= width
                if own == 0 and (indent or fits):
                    parts.append(["", [piece]])
                else:
                    parts[-1][1].append(piece.strip() if own < 20 or parts[-1][0] else piece)
                kind = len(piece)
            else:
                if parts[-1][0]:  # an empty line ends what stands before it
                    parts.append(["", []])
                parts[-1][1].append(piece)
    for mark, lines in parts:
        if mark == "@return":
            entry.result = " ".join(lines).strip()
        elif mark == "@param":
            text = " ".join(lines).strip()
            names = re.match(r"((?:\w+, )*\w+)\s+(.*)", text, re.S)
            for name in names[1].split(", "):
                entry.documented[name] = names[2]
        else:
            entry.text += paragraphs_of(lines, width)


def parameters_of(declaration):
    inside = re.search(r"\((.*)\)", declaration, re.S)
    if not inside or inside[1].strip() in ("", "void"):
        return []
    result = []
    for one in re.sub(r"\s+", " ", inside[1]).split(", "):
        m = re.match(r"(.*?)(\w+)(\[\d*\])?$", one.strip())
        result.append((m[1].strip() + (m[3] or ""), m[2]))
    return result


TOKEN = re.compile(
    r"(?P<comment>/\*.*?\*/)|(?P<record>(?:typedef )?(?:struct|enum)\b[^;{]*\{.*?\}[^;]*;)|(?P<other>[A-Za-z_][^;#/]*;)"
    r"|(?P<directive>^#(?:[^\n]*\\\n)*[^\n]*$)", re.S | re.M)


def parse(folder, header):
    """(entries, records) of one header; a record is (names, docstring's lines, declaration)."""
    text = open(os.path.join(folder, header)).read()
    width = WIDTH.get(os.path.dirname(header), 100)
    text = re.sub(r"#ifdef __cplusplus.*?#endif", "", text, flags=re.S)
    entries, records, group, docstring = [], [], ("", []), ""
    for token in TOKEN.finditer(text):
        if token["comment"]:
            comment = token["comment"]
            if title := re.match(r"/\* -+ (.*?) -+(?: \*/|\n)", comment):
                group = (title[1].rstrip(), paragraphs_of(lines_of(comment)[1:], width))
            elif comment.startswith("/**"):
                docstring = comment
        elif token["record"]:
            names = re.findall(r"^\w+ ?(?:struct|enum) (\w+)|\} (\w+)", token["record"])
            records.append(({n for pair in names for n in pair if n}, lines_of(docstring) if docstring else [], token["record"]))
            docstring = ""
        elif token["other"]:
            declaration = re.sub(r"\s+", " ", token["other"]).strip()
            name = re.search(r"\(\*(\w+)\)|(\w+)\s*(?:\(|\[)", declaration)
            if declaration.startswith("typedef"):
                records.append(({name[1] or name[2]} if name else set(), lines_of(docstring) if docstring else [], declaration))
            elif name:
                entry = Entry(name[2], header, declaration, parameters_of(declaration), group=group)
                if docstring:
                    parse_docstring(entry, docstring, width)
                entries.append(entry)
            docstring = ""
    return entries, records


def codes(folder):
    """Name: (number, meaning) of each code."""
    text = open(os.path.join(folder, "zarnnetsdk/error.h")).read()
    return {m[1]: (m[2], m[3]) for m in re.finditer(r"(ZARNNETERR_\w+) = (0x\w+),?\s*/\* (.*?) \*/", text)}


def common_parameters(folder):
    """Parameters that mean the same everywhere: the list in zarnnetsdk.h."""
    comment = re.search(r"/\*\n \* Parameters.*?\*/", open(os.path.join(folder, "zarnnetsdk/zarnnetsdk.h")).read(), re.S)
    found, names = {}, []
    for line in lines_of(comment[0]) if comment else []:
        if re.match(r" \w+(, \w+)*$", line):
            names = line.strip().split(", ")
        elif line.startswith("     ") and names:
            for name in names:
                found[name] = (found.get(name, "") + " " + line.strip()).strip()
    return found


def exported(map_file):
    return set(re.findall(r"^\s+(\w+);", open(map_file).read(), re.M))


def all_of(folder):
    """(entries by name, records) of all public headers."""
    entries, records = {}, []
    for library in ("zarnnetsdk", "zarnnetchange"):
        for name in sorted(os.listdir(os.path.join(folder, library))):
            if name.endswith(".h") and name not in ("net_int.h", "dhcp_options.h"):
                found, more = parse(folder, f"{library}/{name}")
                entries.update({entry.name: entry for entry in found})
                records += more
    return entries, records
