"""Plain text out of what documents are written in: pages, manuals and catalogues."""
import gzip
import html
import re
import struct

BLOCK = (r"address|article|aside|blockquote|body|br|caption|center|dd|div|dl|dt|entry|figcaption|"
         r"footer|form|glossdef|glossterm|h[1-6]|header|hr|item|li|listitem|main|nav|note|ol|p|"
         r"page|para|section|simpara|step|steps|table|tbody|td|term|th|thead|title|subtitle|tr|ul|"
         r"desc|variablelist|varlistentry|sect[1-5]|chapter|row|option|legend|label|button")
NO_PROSE = re.compile(r"(?is)<(script|style|head|pre|code|screen|programlisting|synopsis|credit|"
                      r"license|years|copyright|legalnotice|revhistory|authorgroup|textarea|"
                      r"literallayout|select|svg)\b[^>]*?(?<!/)>.*?</\1\s*>")
COMMENT = re.compile(r"(?s)<!--.*?-->|<!\[CDATA\[|\]\]>|<\?.*?\?>|<!DOCTYPE[^\[>]*(\[.*?\])?\s*>")
BLOCK_TAG = re.compile(rf"(?i)</?(?:{BLOCK})\b[^>]*>")
ANY_TAG = re.compile(r"<[/?!]?[A-Za-z][^<>]*>")
BETWEEN = "\0"

# Between these a line break of the source is no space.
WITHOUT_SPACES = "[\u0e00-\u0e7f\u3000-\u30ff\u4e00-\u9fff\uff00-\uffef]"
BREAK_WITHOUT_SPACE = re.compile(rf"(?<={WITHOUT_SPACES})[ \t]*[\r\n]+[ \t]*(?={WITHOUT_SPACES})")
BLANKS = re.compile(r"[ \t\r\n\f\v]+")
INVISIBLE = re.compile("[\u200b\u00ad\ufeff\u2060\u2028\u2029\ufffd\ue000-\uf8ff]"
                       "|[\x00-\x08\x0e-\x1f\x7f-\x9f]")


def one_line(text):
    return BLANKS.sub(" ", BREAK_WITHOUT_SPACE.sub("", text)).strip()


def paragraphs_of_markup(text):
    text = NO_PROSE.sub(BETWEEN, COMMENT.sub("", text))
    text = ANY_TAG.sub("", BLOCK_TAG.sub(BETWEEN, text))
    return [one_line(html.unescape(part)) for part in text.split(BETWEEN)]


FONT = re.compile(r"\\f(?:\(..|\[[^\]]*\]|.)|\\s[+-]?\d+|\\\*(?:\(..|\[[^\]]*\]|.)|\\[&%:/,)|^]|\\c$")
SPECIAL = re.compile(r"\\\((..)|\\\[([^\]]*)\]")
SPECIALS = {"aq": "'", "cq": "’", "oq": "‘", "lq": "“", "rq": "”", "dq": '"', "co": "©", "em": "—",
            "en": "–", "hy": "-", "bu": "•", "ha": "^", "ti": "~", "Fo": "«", "Fc": "»"}
WITH_WORDS = re.compile(r"^[.'][ \t]*(B|I|BR|IR|RB|RI|BI|IB|SM|SB|Nm|Em|Sy)\b[ \t]*(.*)")
TITLE = re.compile(r"^[.'][ \t]*(SH|SS|Sh|Ss)\b[ \t]*(.*)")
AS_IS = re.compile(r"^[.'][ \t]*(nf|EX|Bd)\b")
NO_LONGER_AS_IS = re.compile(r"^[.'][ \t]*(fi|EE|Ed)\b")


def without_escapes(line):
    line = SPECIAL.sub(lambda found: SPECIALS.get(found[1] or found[2], ""), FONT.sub("", line))
    return line.replace(r"\-", "-").replace(r"\e", "\\").replace(r"\~", " ").replace("\\ ", " ")


def paragraphs_of_manual(text):
    paragraphs, words, as_is = [], [], False

    def end():
        paragraphs.append(one_line("\n".join(words)))
        words.clear()

    for line in text.splitlines():
        line = re.sub(r'\\".*', "", line)
        if AS_IS.match(line) or NO_LONGER_AS_IS.match(line):
            as_is = bool(AS_IS.match(line))
            end()
        elif as_is:
            continue
        elif not line.startswith((".", "'")):
            if line.strip():
                words.append(without_escapes(line))
            else:
                end()
        elif found := WITH_WORDS.match(line):
            joint = "" if len(found[1]) == 2 and found[1] not in ("SM", "SB", "Nm", "Em",
                                                                 "Sy") else " "
            parts = re.findall(r'"([^"]*)"|(\S+)', found[2])
            words.append(without_escapes(joint.join(a or b for a, b in parts)))
        elif found := TITLE.match(line):
            end()
            words.append(without_escapes(found[2].strip('"')))
            end()
        else:
            end()
    end()
    return paragraphs


def paragraphs_of_plain(text):
    return [one_line(part) for part in re.split(r"\n[ \t]*\n", text)]


def messages(data):
    """The pairs (original, translation) of a catalogue, in the order of the file."""
    order = "<" if data[:4] == b"\xde\x12\x04\x95" else ">"
    _, _, count, originals, translations = struct.unpack(order + "5I", data[:20])

    def text(table, index):
        length, offset = struct.unpack_from(order + "2I", data, table + 8 * index)
        return data[offset:offset + length]

    pairs = [(text(originals, i), text(translations, i)) for i in range(count)]
    header = next((t for o, t in pairs if not o), b"")
    found = re.search(rb"charset=([\w-]+)", header)
    charset = found[1].decode() if found else "utf-8"
    return [(o.decode(charset), t.decode(charset)) for o, t in pairs if o]


ACCELERATOR = re.compile(r"\s*\([_&~]?[A-Z0-9]\)|[~&](?=\w)(?!\w+;)|(?<!\w)_(?=\w)|(?<=\w)_(?=\w)")
TAG = re.compile(r"<[^<>\n]{1,80}>")
PLACE = re.compile(r"%[-+0#']?\d*(?:\.\d+)?(?:\d+\$)?(?:l{0,2}|z)[a-zA-Z]|%\(\w+\)[sd]|%\d+|"
                   r"\$?\{[^{}]*\}|\$\w+")


def paragraphs_of_message(message):
    """A message's lines, without what a program marks and with figures for what it puts in."""
    message = message.split("\x04")[-1].replace("\x00", "\n").replace("\\n", "\n")
    message = PLACE.sub("1", TAG.sub("", ACCELERATOR.sub("", message)))
    return [one_line(html.unescape(line)) for line in message.splitlines()]


def decoded(data):
    """The text of a file, or None where its charset is not told."""
    try:
        return data.decode("utf-8")
    except UnicodeDecodeError:
        found = re.search(rb"""(?i)(?:charset|encoding)\s*=\s*["']?([\w-]+)""", data[:2000])
        try:
            return data.decode(found[1].decode()) if found else None
        except (LookupError, UnicodeDecodeError):
            return None


def file_bytes(path):
    data = path.read_bytes()
    return gzip.decompress(data) if path.suffix == ".gz" else data
