"""Files of mixed charsets, and what the command `ksv` answers about them."""
from __future__ import annotations

import json
import os
import random
import subprocess
from pathlib import Path

FILES = int(os.environ.get("KSV_CLUSTER_FILES", "20000"))
COMMAND = os.environ.get("KSV_COMMAND", "ksv")
SEED = int(os.environ.get("KSV_TEST_SEED", "20"))
PICTURE = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1"

JAPANESE = ["山路を登りながら、こう考えた。", "智に働けば角が立つ。", "情に棹させば流される。", "意地を通せば窮屈だ。",
            "とかくに人の世は住みにくい。", "どこへ越しても住みにくいと悟った時、詩が生れて、画が出来る。"]
CHINESE = ["一边登着山路，一边这样想。", "发挥才智，则锋芒毕露。", "凭借感情，则流于世俗。", "坚持己见，则多方掣肘。"]
TAIWANESE = ["一邊登著山路，一邊這樣想。", "發揮才智，則鋒芒畢露。", "憑藉感情，則流於世俗。", "堅持己見，則多方掣肘。"]
KOREAN = ["산길을 오르면서 이렇게 생각했다.", "지혜롭게 행동하면 모가 난다.", "정에 얽매이면 휩쓸린다.", "아무튼 사람 사는 세상은 살기 어렵다."]
RUSSIAN = ["Поднимаясь по горной тропе, я думал так.", "Живёшь умом и становишься резким.", "Отдаёшься чувству и тебя уносит.",
           "Словом, жить в этом мире трудно."]
FRENCH = ["En montant le sentier de la montagne, je me suis dit ceci.", "Celui qui suit sa raison a des arêtes trop vives.",
          "Quiconque cède à ses émotions est emporté.", "Bref, il n'est pas très aisé de vivre où que ce soit."]
CHARSETS = [("shift_jis", JAPANESE), ("cp932", JAPANESE), ("euc_jp", JAPANESE), ("iso2022_jp", JAPANESE), ("utf-8", JAPANESE),
            ("utf-16", JAPANESE), ("gb18030", CHINESE), ("big5", TAIWANESE), ("euc_kr", KOREAN), ("koi8_r", RUSSIAN),
            ("cp1251", RUSSIAN), ("cp1252", FRENCH), ("utf-8", FRENCH), ("utf-8", KOREAN)]


def _content(number: int, chance: random.Random) -> bytes:
    kind = number % 50
    if kind == 0:
        return b""
    if kind == 1:
        return PICTURE + chance.randbytes(400)
    charset, sentences = chance.choice(CHARSETS)
    lines = [f"{number}: " + "".join(chance.choices(sentences, k=4)) for _ in range(chance.randint(4, 40))]
    text = ("\n".join(lines) + "\n").encode(charset)
    return text[:len(text) // 2] + b"\xff\xff" + text[len(text) // 2:] if kind == 2 else text


def make(folder: Path) -> list[str]:
    """The paths. Each hundredth file has the bytes of another one."""
    chance = random.Random(SEED)
    folder.mkdir()
    paths, content = [], b""
    for number in range(FILES):
        if number % 100 != 99:
            content = _content(number, chance)
        path = folder / f"{number:06}.txt"
        path.write_bytes(content)
        paths.append(str(path))
    return paths


def answers_of_command(paths: list[str], folder: Path) -> dict[str, tuple[str | None, bytes | None]]:
    """Of each path the charset that the command read it in, and the text that it made; None where it has made none."""
    names = folder / "names"
    names.write_text("".join(path + "\n" for path in paths), encoding="utf-8")
    output = folder / "texts of the command"
    output.mkdir()
    done = subprocess.run([COMMAND, "convert", "-t", "UTF-8", "--quiet", "--json", "--files-from", str(names), "--output-dir",
                           str(output)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    assert done.returncode == 1  # since some of the files are damaged
    found = {}
    for line in done.stdout.splitlines():
        record = json.loads(line)
        is_converted = record["result"] == "converted"
        text = Path(record["output"]).read_bytes() if is_converted else None
        found[record["path"]] = (record["source"] if is_converted else None, text)
    assert len(found) == len(paths)
    return found


def answer_of(result: dict[str, object]) -> tuple[object, bytes | None]:
    """The same of a record of ksv.files, wherever its text is."""
    if result["status"] == "empty":
        return "empty", None
    if result["status"] != "converted":
        return None, None
    if result.get("output"):
        return result["decode_as"], Path(str(result["output"])).read_bytes()
    text = result["text"]
    return result["decode_as"], text.encode() if isinstance(text, str) else text


def differences(records: list[dict[str, object]], command: dict[str, tuple[str | None, bytes | None]]) -> list[object]:
    """What the two answer otherwise. Empty files are
    converted to nothing by the command, and told by the package."""
    told = []
    for record in records:
        charset, text = command[str(record["path"])]
        ours = answer_of(record)
        if charset == "UTF-16" and ours[0] in ("UTF-16LE", "UTF-16BE"):
            charset = ours[0]  # The command leaves the order out where a mark has told it.
        if ours[0] == "empty" and text == b"":
            continue
        if ours != (charset, text):
            told.append((record["path"], ours[0], charset, record["error"]))
    return told
