"""Run by GDB on an object file: compares the layouts of libVNbase-gdb.py, whose name stands in SCRIPT, with its types."""
import types

import gdb

script = types.ModuleType("vnbase_gdb")
with open(SCRIPT, encoding="utf-8") as file:
    exec(compile(file.read(), SCRIPT, "exec"), script.__dict__)

OVERRIDES = ("std::map<std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
             "Vn::InContextAlias<Vn::InInitOvr, 0>*, std::less<void>, std::allocator<std::pair<std::__cxx11::basic_string<char, "
             "std::char_traits<char>, std::allocator<char> > const, Vn::InContextAlias<Vn::InInitOvr, 0>*> > >")
# Where a layout's name isn't the class's, or its fields are reached by longer ways.
TYPES = {
    "std::vector": "std::vector<Vn::PackageEntry, std::allocator<Vn::PackageEntry> >",
    "std::list": "std::__cxx11::list<Vn::LgQueue*, std::allocator<Vn::LgQueue*> >",
    "std::map": OVERRIDES,
    "std::string": "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >",
    "Vn::InContextAliasBase": "Vn::InContextAlias<Vn::InInitEnv, 1>",
}
WAYS = {
    "std::vector": {"first": "_M_impl._M_start", "last": "_M_impl._M_finish", "end": "_M_impl._M_end_of_storage"},
    "std::list": {"next": "_M_impl._M_node._M_next", "previous": "_M_impl._M_node._M_prev",
                  "size": "_M_impl._M_node._M_size"},
    "std::map": {"compare": "_M_t._M_impl._M_key_compare", "color": "_M_t._M_impl._M_header._M_color",
                 "root": "_M_t._M_impl._M_header._M_parent", "left": "_M_t._M_impl._M_header._M_left",
                 "right": "_M_t._M_impl._M_header._M_right", "count": "_M_t._M_impl._M_node_count"},
    "std::_Rb_tree_node_base": {"color": "_M_color", "parent": "_M_parent", "left": "_M_left", "right": "_M_right"},
    "std::string": {"text": "_M_dataplus._M_p", "size": "_M_string_length", "local": "_M_local_buf"},
    "Vn::InTable<Vn::InTextKey, Vn::InVariableBase*>::Slot": {"text": "key._text", "length": "key._length",
                                                              "hash": "key._hash"},
}
UNSIZED = {"_outputFlags", "compare", "local", "more"}


def place_of(type_, way):
    """The place in bytes of a field, its size, and whether it is in the class: by a way of names, bases included."""
    at = 0
    for name in way.split("."):
        found = find(type_, name)
        if found is None:
            return None
        at, type_ = at + found[0], found[1]
    return at, type_.sizeof


def find(type_, name):
    for field in type_.strip_typedefs().fields():
        if not hasattr(field, "bitpos"):
            continue
        if field.name == name or (name == "_vptr" and (field.name or "").startswith("_vptr")):
            return field.bitpos // 8, field.type
        if field.is_base_class or not field.name:  # an unnamed union
            found = find(field.type, name)
            if found is not None:
                return field.bitpos // 8 + found[0], found[1]
    return None


def lookup(name):
    try:
        return gdb.lookup_type(name)
    except gdb.error:
        print(f"{name}: there is no such class")
        return None


checked = differing = 0
for layout in [value for value in vars(script).values() if isinstance(value, script.Layout)]:
    type_ = lookup(TYPES.get(layout.name, layout.name))
    if type_ is None:
        differing += 1
        continue
    for field, (at, kind) in layout.fields.items():
        if field == "more":
            continue
        checked += 1
        place = place_of(type_, WAYS.get(layout.name, {}).get(field, field))
        if place is None or place[0] != at or (field not in UNSIZED and place[1] != kind.size):
            differing += 1
            print(f"{layout.name}::{field}: is at {place}, and the layout has it at {(at, kind.size)}")
    # What is walked as an array must have the whole size.
    if layout in (script.ENTRY, script.PACKAGE_ENTRY, script.SLOT, script.STRING, script.TREE_NODE) and (
            type_.sizeof != layout.size):
        differing += 1
        print(f"{layout.name}: has {type_.sizeof} bytes, and the layout {layout.size}")
print(f"{checked} fields, {differing} differ")
