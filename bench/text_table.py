"""Tables in Markdown, their columns padded so that they read well as plain text, too."""


def print_table(title, header, rows):
    """The first column is aligned to the left, all others to the right."""
    texts = [[str(cell) for cell in row] for row in [header, *rows]]
    widths = [max(len(row[column]) for row in texts) for column in range(len(header))]
    rule = ["-" * widths[0], *("-" * (width - 1) + ":" for width in widths[1:])]
    print(f"\n{title}\n")
    for row in [texts[0], rule, *texts[1:]]:
        cells = [cell.rjust(width) for cell, width in zip(row, widths)]
        print("|", " | ".join([row[0].ljust(widths[0]), *cells[1:]]), "|", flush=True)


def short_count(count):
    """Shortened where that loses nothing: 250 k, 4 M."""
    if count % 100_000 == 0 and count >= 1_000_000:
        return f"{count / 1e6:g} M"
    return f"{count // 1000} k" if count % 1000 == 0 else str(count)
