#!/usr/bin/env python3
"""Writes mails at random by Python's email package, in twenty charsets, has ksv mail read them as one
mailbox, and compares what it tells with what was written.

    random_mails.py COMMAND [--count N] [--seed N]

A field that Python does not read back as it wrote it is left out and counted: where it folds, it loses
blanks between encoded words, and quotation marks around commas. Names of addresses are compared without
blanks where they differ: Python reads a blank between two encoded words of a name, which stands for none.
"""

import argparse
import email
import email.policy
import json
import os
import random
import subprocess
import sys
import tempfile
from email.header import Header
from email.headerregistry import Address
from email.message import EmailMessage
from pathlib import Path

# Each with letters that it has.
CHARSETS = {
    "utf-8": "あいう漢字가나ёжàéß€😀",
    "us-ascii": "abcdefg",
    "iso-8859-1": "àéîõüßñ",
    "iso-8859-2": "ąčďęłňřšž",
    "iso-8859-5": "абвгдёж",
    "iso-8859-7": "αβγδεζ",
    "iso-8859-9": "ğışöüç",
    "iso-8859-15": "€œšž",
    "windows-1250": "ąčďęłň„“",
    "windows-1251": "абвгдёж„“",
    "windows-1252": "àé€“”…",
    "windows-1256": "ابتثج",
    "koi8-r": "абвгдёж",
    "tis-620": "กขคงจ",
    "shift_jis": "あいう漢字カナ",
    "euc-jp": "あいう漢字カナ",
    "iso-2022-jp": "あいう漢字カナ",
    "gb2312": "中文汉字测试",
    "gb18030": "中文汉字测试丂",
    "big5": "中文漢字測試",
    "euc-kr": "가나다라한글",
}
ASCII = "abc XYZ 123 -_.,;:!?()<>@\"'=+"


class Writer:
    def __init__(self, seed: int) -> None:
        self._random = random.Random(seed)

    def text(self, charset: str, most: int, others: str = ASCII) -> str:
        letters = CHARSETS[charset] * 3 + others
        return "".join(self._random.choices(letters, k=self._random.randint(1, most)))

    # Without blanks at the ends, and without two in a row, which folding may take for one.
    def line(self, charset: str, most: int, others: str = ASCII) -> str:
        return " ".join(self.text(charset, most, others).split()) or "x"

    def body(self, charset: str) -> str:
        return "".join(self.text(charset, 100, ASCII + "  \t") + "\n"
                       for _ in range(self._random.randint(1, 12)))

    def charset(self) -> str:
        return self._random.choice(list(CHARSETS))

    def address(self) -> Address:
        return Address(self.line(self.charset(), 20, "abc XYZ,.\""), f"u{self._random.randint(0, 99)}",
                       "example.jp")

    def mail(self) -> tuple[bytes, dict]:
        charset = self.charset()
        message = EmailMessage(policy=email.policy.default.clone(
            linesep=self._random.choice(["\n", "\r\n"]), max_line_length=self._random.choice([60, 78])))
        senders = [self.address()]
        receivers = [self.address() for _ in range(self._random.randint(1, 4))]
        subject = self.line(self.charset(), 60)
        message["From"] = senders
        message["To"] = receivers
        message["Subject"] = subject
        message["Date"] = "Thu, 29 Feb 2024 12:34:56 +0900"
        texts, names = [], []
        body = self.body(charset)
        encoding = self._random.choice(["base64", "quoted-printable"])
        message.set_content(body, charset=charset, cte=encoding)
        texts.append(body)
        if self._random.random() < 0.4:
            rich = f"<p>{self.line(charset, 40, 'abc')}</p>\n"
            message.add_alternative(rich, subtype="html", charset=charset, cte="base64")
            texts.append(rich)
        for _ in range(self._random.randint(0, 2)):
            name = self.line(self.charset(), 30, "abc-_.")
            message.add_attachment(self._random.randbytes(self._random.randint(0, 200)),
                                   maintype="application", subtype="octet-stream", filename=name)
            names.append(name)
        expected = {
            "subject": subject,
            "from": [{"name": a.display_name, "address": a.addr_spec} for a in senders],
            "to": [{"name": a.display_name, "address": a.addr_spec} for a in receivers],
            "date": "2024-02-29T12:34:56+09:00",
            "texts": texts,
            "names": names,
        }
        return message.as_bytes(), expected

    # As programs wrote them that know nothing of RFC 2231: encoded words by charset.
    def classic_mail(self) -> tuple[bytes, dict]:
        charset = self.charset()
        subject = self.line(charset, 60)
        body = self.body(charset)
        words = Header(subject, charset, header_name="Subject").encode()
        head = (f"Subject: {words}\nContent-Type: text/plain; charset={charset}\n"
                "Content-Transfer-Encoding: 8bit\n\n").encode("ascii")
        expected = {"subject": subject, "texts": [body]}
        return head + body.encode(charset), expected


def quoted(mail: bytes) -> bytes:
    """As it stands in a mailbox."""
    lines = mail.splitlines(keepends=True)
    return b"".join(b">" + line if line.lstrip(b">").startswith(b"From ") else line for line in lines)


def told(record: dict) -> dict:
    return {
        "subject": record["subject"],
        "from": record["from"],
        "to": record["to"],
        "date": record["date"],
        "texts": [part["text"] for part in record["parts"] if "text" in part],
        "names": [part["fileName"] for part in record["parts"] if part.get("fileName")],
    }


def read_by_python(mail: bytes) -> dict:
    message = email.message_from_bytes(mail, policy=email.policy.default)
    addresses = {field: [{"name": a.display_name, "address": a.addr_spec}
                         for a in (message[field].addresses if message[field] else ())]
                 for field in ("from", "to")}
    return addresses | {"subject": str(message["Subject"]),
                        "names": [part.get_filename() for part in message.walk()
                                  if part.get_filename()]}


def without_blanks(addresses: list[dict]) -> list[str]:
    return ["".join(address["name"].split()) + " " + address["address"] for address in addresses]


def differences(mail: bytes, expected: dict, record: dict) -> tuple[list[str], int]:
    """Lines, and how many fields Python itself does not read as they were written."""
    found = told(record)
    lines, lost = [], 0
    for key, value in expected.items():
        if found[key] == value:
            continue
        if read_by_python(mail).get(key, value) != value or (
                key in ("from", "to") and without_blanks(value) == without_blanks(found[key])):
            lost += 1
        else:
            lines.append(f"{key}: written {value!r}, read {found[key]!r}")
    if record["problems"]:
        lines.append(f"problems: {record['problems']}")
    return lines, lost


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("command")
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=int(os.environ.get("KSV_TEST_SEED", "1")))
    arguments = parser.parse_args()
    writer = Writer(arguments.seed)
    mails = [writer.mail() if i % 3 else writer.classic_mail() for i in range(arguments.count)]
    with tempfile.TemporaryDirectory() as directory:
        box = Path(directory) / "box"
        box.write_bytes(b"".join(b"From a@b.c Thu Feb 29 12:34:56 2024\n" + quoted(mail) +
                                 (b"" if mail.endswith(b"\n") else b"\n") + b"\n" for mail, _ in mails))
        run = subprocess.run([arguments.command, "mail", "--json", str(box)], capture_output=True,
                             check=True)
    records = [json.loads(line) for line in run.stdout.splitlines()]
    if len(records) != len(mails):
        print(f"{len(mails)} mails written, {len(records)} read")
        return 1
    bad = lost = 0
    for index, ((mail, expected), record) in enumerate(zip(mails, records)):
        lines, lost_here = differences(mail, expected, record)
        for line in lines:
            print(f"mail {index} of seed {arguments.seed}: {line}")
        bad += len(lines)
        lost += lost_here
    print(f"{len(mails)} mails, {bad} differences; {lost} fields that Python itself reads otherwise")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
