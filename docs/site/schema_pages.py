"""Sphinx extension: pages of the schema, and links to them from every name in prose.

A page of the schema is a file with the one directive `schema-section:: UNIT NUMBER`. Each message,
field, enumeration and value on it is an object that the search knows. Sphinx would lower-case ordinary
labels; these anchors are the names themselves: #Dial, #Dial.clir, #RADIO_E_SIM_BUSY.
"""

import re

import schema
from docutils import nodes
from docutils.parsers.rst import Directive
from sphinx import addnodes

NAME = re.compile(r"\b[A-Z]\w+(?:\.[a-z]\w+)?\b")


def is_word(name):
    """Whether an ordinary word is a name too (Call, BUSY): prose does not link it."""
    return name.isalpha() and (name.isupper() or name[1:].islower())


def literal(text, *classes):
    return nodes.literal("", text, classes=list(classes))


def slug(title):
    return re.sub(r"[^a-z0-9]+", "-", title.lower()).strip("-")


def places(everything):
    """Every name of the schema, and the page with its entry."""
    found = {}
    for unit in everything.units:
        for section in unit.sections:
            for declared in section.members:
                inner = ([f"{declared.name}.{field.name}" for field in declared.fields]
                         if isinstance(declared, schema.Message) else [v.name for v in declared.values])
                found.update(dict.fromkeys([declared.name, *inner],
                                           f"schema/{unit.name}/{slug(section.title)}"))
    return found


def reference(app, docname, page, anchor, node):
    """A link from one page to an anchor on another."""
    uri = f"{app.builder.get_relative_uri(docname, page)}#{anchor}"
    return nodes.reference("", "", node, internal=True, refuri=uri)


def joined(parts):
    """The parts as inline nodes with commas between them."""
    return [node for part in parts for node in (nodes.Text(", "), part)][1:]


class SchemaSection(Directive):
    """All members of one section of a unit."""

    required_arguments = 2

    def run(self):
        self.env = self.state.document.settings.env
        self.docname, self.names = self.env.docname, self.env.app.virtual_modem_places
        unit = next(u for u in self.env.app.virtual_modem_schema.units if u.name == self.arguments[0])
        section = unit.sections[int(self.arguments[1])]
        return [self.member(member) for member in section.members]

    def entry(self, objtype, name, title, *signature, shown=None):
        """A description of one object, and the node that its content goes to."""
        head = addnodes.desc_signature("", "", ids=[name], classes=["sig", "sig-object"])
        head["_toc_name"] = title if objtype in ("message", "enumeration") else ""
        head["_toc_parts"] = (title,)
        head += addnodes.desc_name("", title)
        for part in signature:
            head += nodes.Text(" ")
            head += part
        content = addnodes.desc_content()
        whole = addnodes.desc("", head, content, domain="std", objtype=objtype, desctype=objtype,
                              noindex=False, classes=["vm", objtype])
        self.env.get_domain("std").note_object(f"schema-{objtype}", shown or name, name, whole)
        return whole, content

    def prose(self, text, own):
        """A paragraph, its names code spans except for the one that it explains."""
        paragraph, end = nodes.paragraph(), 0
        text = " ".join(text.split())
        for match in NAME.finditer(text):
            name = match[0]
            if name not in self.names:
                name = name.partition(".")[0]
            if name not in self.names or name == own or is_word(name):
                continue
            paragraph += nodes.Text(text[end:match.start()])
            paragraph += literal(name)
            end = match.start() + len(name)
        paragraph += nodes.Text(text[end:])
        return paragraph

    def comment(self, declared):
        for block in re.split(r"\n\s*\n", declared.comment.strip("\n")):
            lines = block.split("\n")
            if all(line.startswith("   ") for line in lines):
                yield nodes.literal_block("", "\n".join(line[3:] for line in lines), language="none")
            else:
                yield self.prose(block, declared.name)

    def facts(self, declared):
        """Pairs of a title and inline nodes."""
        if isinstance(declared, schema.Message):
            names = [literal(name) for name in declared.answered_by or declared.answers]
            if declared.is_agreed:
                names.append(nodes.Text("agreed between the sides"))
            if names:
                yield ("Answers" if declared.kind == "response" else "Answer"), joined(names)
        if declared.carried_by:
            yield "Carried by", joined(literal(f"{message}.{field}")
                                       for message, field in declared.carried_by)
        scenarios = self.env.app.virtual_modem_exchanges.get(declared.name)
        if scenarios:
            yield "In the demo", joined(
                reference(self.env.app, self.docname, "schema/exchanges", f"exchange-{name}",
                          nodes.inline("", name)) for name in scenarios)
        if declared.cpp_name != declared.name:
            yield "C++", [literal(declared.cpp_name)]

    def member(self, declared):
        is_message = isinstance(declared, schema.Message)
        kind = (declared.kind or "message") if is_message else "enumeration"
        whole, content = self.entry(
            "message" if is_message else "enumeration", declared.name, declared.name,
            nodes.inline("", kind, classes=["badge", kind]))
        content += list(self.comment(declared))
        for title, facts in self.facts(declared):
            content += nodes.paragraph("", f"{title}: ", *facts, classes=["fact"])
        if is_message:
            content += [self.field(declared, field) for field in declared.fields]
        else:
            content += [self.value(declared, value) for value in declared.values]
        return whole

    def field(self, message, field):
        signature = [nodes.inline("", field.label, classes=[field.label]), literal(field.type),
                     nodes.inline("", f"= {field.number}"),
                     nodes.inline("", f"tag {field.tag} ({field.wire})", classes=["wire"])]
        if field.default is not None:
            signature.append(nodes.inline("", f"default {field.default}"))
        if field.is_subscriber_data:
            signature.append(nodes.inline("", "subscriber data", classes=["badge", "masked"]))
        name = f"{message.name}.{field.name}"
        whole, content = self.entry("field", name, field.name, *signature)
        content += self.prose(field.comment, message.name)
        return whole

    def value(self, enum, value):
        decimal, hexadecimal = str(value.number), hex(value.number & 0xFFFFFFFF)
        whole, content = self.entry(
            "value", value.name, value.name, nodes.inline("", f"= {decimal}"),
            nodes.inline("", f"{hexadecimal}, wire {value.wire}", classes=["wire"]),
            # The search compares what follows the last dot with the words.
            shown=f"{decimal} = {hexadecimal} = {enum.name}.{value.name}")
        content += self.prose(value.comment, value.name)
        return whole


def link_names(app, doctree, docname):
    """Links the code spans that are names, of the schema's pages and of guides."""
    for span in list(doctree.findall(nodes.literal)):
        page = app.virtual_modem_places.get(span.astext())
        if page and not isinstance(span.parent, nodes.reference):
            span.replace_self(reference(app, docname, page, span.astext(), span.deepcopy()))


def setup(app):
    for kind in ("message", "field", "enumeration", "value"):
        app.add_object_type(f"schema-{kind}", f"schema-{kind}", objname=kind)
    app.add_directive("schema-section", SchemaSection)
    app.connect("doctree-resolved", link_names)
    return {"parallel_read_safe": True, "parallel_write_safe": True}
