"""The repository's Markdown as Doxygen's: headings get names, and links go to them."""
import os
import re


def slug(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def page_name(path):
    """The name of a page, by its path in the repository."""
    return "page_" + re.sub(r"\W", "_", os.path.splitext(path)[0].lower())


def convert(path, text, pages, files):
    """`pages` are the paths of all pages; `files` collects those of other files that are linked to."""
    seen_title = False

    def link(found):
        words, target = found.groups()
        if re.match(r"\w+:", target):
            return found[0]
        target, _, anchor = target.partition("#")
        target = os.path.normpath(os.path.join(os.path.dirname(path), target)) if target else path
        if target in pages:
            return f"[{words}](@ref {page_name(target)}{'_' + anchor if anchor else ''})"
        if os.path.isdir(target):
            return words
        files.add(target)
        return f'<a href="files/{target}.txt">{words}</a>'

    def heading(found):
        nonlocal seen_title
        name = page_name(path) + ("_" + slug(found[2]) if seen_title else "")
        seen_title = True
        return f"{found[1]} {found[2]} {{#{name}}}"

    # Code stays as it is.
    parts = re.split(r"(^```[^`]*?^```$|^    .*$)", text, flags=re.M)
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"(?<!!)\[([^\]]+)\]\(([^)\s]+)\)", link, parts[i])
        parts[i] = re.sub(r'<a id="([\w-]+)"></a>', rf"\\anchor {page_name(path)}_\1 ", parts[i])
        parts[i] = re.sub(r"^(#+) (.*)$", heading, parts[i], flags=re.M)
        # In a table's code Doxygen shows the backslash before a bar.
        parts[i] = re.sub(r"`([^`\n]*\\\|[^`\n]*)`", r"<tt>\1</tt>", parts[i])
    return "".join(parts)
