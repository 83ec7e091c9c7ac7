"""The frame that the pictures of figures in docs/images/ share: title, and colours for light and dark.

Used by tools/compare_peers and tools/measure_strength.
"""
import xml.sax.saxutils


def escaped(text):
    return xml.sax.saxutils.escape(text)


def picture(title, width, height, rows, light="", dark=""):
    """An SVG file of these elements below a title.

    Of its classes `.bar` is grey and `.first` is the colour that stands out. What else a picture has goes into `light`
    and `dark`, in which it may change colours.
    """
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" role="img"'
        ' font-family="sans-serif" font-size="14">\n'
        f'<title>{escaped(title)}</title>\n'
        f'<style>text{{fill:#24292f}}.bar{{fill:#8c959f}}.first{{fill:#0969da}}{light}'
        f'@media(prefers-color-scheme:dark){{text{{fill:#c9d1d9}}.bar{{fill:#6e7681}}.first{{fill:#58a6ff}}{dark}}}'
        '</style>\n'
        f'<text x="10" y="24" font-weight="bold">{escaped(title)}</text>\n' + "\n".join(rows) + "\n</svg>\n")
