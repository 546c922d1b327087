"""The public headers of both libraries, and the classes that each defines in the namespace Vn."""
import re

# At the beginning of a line, so not within a class; tags of packages are in the namespace VnInit and are left out.
CLASS = re.compile(r"^(?:class|struct)\s+(?:VN_\w+\s+)?(\w+)(?:\s+final)?\s*(?::[^:;{][^;{]*)?\{", re.M)
EXPORTED = re.compile(r"^(?:class|struct)\s+VN_\w+_EXPORT\s+(\w+)(?!\w|::|<)[^;{]*\{", re.M)
PACKAGES = re.compile(r"^namespace VnInit\s*\{.*?^\}  // namespace VnInit", re.M | re.S)


def public_headers(root):
    return [path for folder in ("base", "threadlog") for path in sorted((root / "src" / folder).glob("*.h"))
            if not path.stem.endswith("_p")]


def classes_of(path):
    text = PACKAGES.sub("", re.sub(r"//[^\n]*", lambda match: match[0] if "namespace" in match[0] else "",
                                   path.read_text()))
    found = set(CLASS.findall(text))
    missed = set(EXPORTED.findall(text)) - found
    if missed:
        raise SystemExit(f"{path}: classes that the pattern misses: {missed}")
    return found


def all_classes(root):
    """Each public class, and the path of its header from the root."""
    return {name: str(path.relative_to(root)) for path in public_headers(root) for name in classes_of(path)}
