"""The public headers of both libraries, and the classes that each defines in the namespace Vn."""
import pathlib
import re

CLASS = re.compile(r"^(?:template <[^;{}]*>\s*)?(?:class|struct)\s+(?:[A-Z][A-Z_]*_EXPORT\s+)?(\w+)(?:\s+final)?\s*(?::[^:;][^;{]*)?\{",
                   re.M)


def public_headers(root):
    return [path for folder in ("base", "threadlog") for path in sorted((root / "src" / folder).glob("*.h"))
            if not path.stem.endswith("_p")]


def classes_of(path):
    """The classes and structures that a header defines at the beginning of a line, which is to say in a namespace."""
    text = re.sub(r"//[^\n]*", "", path.read_text())
    return CLASS.findall(text)


def all_classes(root):
    """Each public class, and the headers that define it."""
    found = {}
    for path in public_headers(root):
        for name in classes_of(path):
            found.setdefault(name, []).append(path)
    return found
