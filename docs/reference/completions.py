#!/usr/bin/env python3
"""Makes the completions of the command for bash, zsh and fish from its own option table.

    completions.py OPTION_TABLE DIRECTORY

Names of charsets are asked of the command when they are wanted, since the charset directory may
bring names of its own.
"""

from __future__ import annotations

import json
import shlex
import sys
from collections.abc import Iterator
from pathlib import Path

CHARSET, FILE, DIRECTORY, NOTHING = "charset", "file", "directory", "nothing"
# What completes a value, by what the help calls it.
KINDS = {"CHARSET": CHARSET, "FILE": FILE, "LIST": FILE, "MANIFEST": FILE, "DIR": DIRECTORY, "SUFFIX": NOTHING,
         "FORM": NOTHING, "WIDTHS": NOTHING, "N": NOTHING, "BYTES": NOTHING, "CHAR": NOTHING,
         "NAME": NOTHING, "NAME=VALUE": NOTHING, "LANGUAGES": NOTHING, "CHARSETS": CHARSET, "PATH": NOTHING, "GLOB": NOTHING, "WHICH": NOTHING}


def kind_of(option: dict) -> str:
    """An option with values of its own needs no kind."""
    return NOTHING if option["oneOf"] else KINDS[option["value"]]


def calls_of(table: dict) -> Iterator[tuple[str, dict]]:
    """The words behind the command, and what can follow: of each job, or each of its parts."""
    for job in table["jobs"]:
        for part in job["parts"]:
            yield f"{job['name']} {part['name']}", part
        if not job["parts"]:
            yield job["name"], job


def head(table: dict, sign: str = "#") -> str:
    return f"{sign} Completion of {table['name']}, made from the options of {table['version']}.\n"


# ---- bash ----

BASH_FUNCTIONS = r'''
# Those words that begin like the current one.
_ksv_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

# The same of values with blanks in them.
_ksv_values() {
  local value
  for value in "$@"; do
    if [[ $value == "${current//\\/}"* ]]; then COMPREPLY+=("$(printf %q "$value")"); fi
  done
}

_ksv_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}

# Case counts only where it leaves something.
_ksv_charsets() {
  local names name
  mapfile -t names < <("${COMP_WORDS[0]}" charsets 2>/dev/null | tr '\t ' '\n\n')
  for name in "${names[@]}"; do
    if [[ $name == "$current"* ]]; then COMPREPLY+=("$name"); fi
  done
  if ((${#COMPREPLY[@]} == 0)); then
    for name in "${names[@]}"; do
      if [[ ${name,,} == "${current,,}"* ]]; then COMPREPLY+=("$name"); fi
    done
  fi
  # bash breaks words at colons, and keeps what stands in front.
  if [[ $current == *:* && $COMP_WORDBREAKS == *:* ]]; then
    COMPREPLY=("${COMPREPLY[@]#"${current%:*}:"}")
  fi
}

# The words that name the job: those in front of the current one that are no options.
_ksv_job() {
  local word
  job=
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word == -* ]]; then continue; fi
    job=${job:+$job }$word
    if [[ $job != @(PARTED) ]]; then return; fi
  done
}

_ksv() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} job
  local at=$COMP_CWORD
  COMPREPLY=()
  # --option=value and names with colons are several words.
  while ((at > 2)) && [[ ${COMP_WORDS[at]} == : || ${COMP_WORDS[at-1]} == : ]]; do
    at=$((at - 1))
    current=${COMP_WORDS[at]}$current
    previous=${COMP_WORDS[at-1]}
  done
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[at-2]}
  fi
  _ksv_job
  case $job in
CASES
  esac
}
complete -F _ksv ksv
'''


def bash_value(option: dict) -> str:
    if option["oneOf"]:
        return f"_ksv_words '{' '.join(option['oneOf'])}'"
    if option["usual"]:
        return "_ksv_values " + " ".join(map(shlex.quote, option["usual"]))
    return {CHARSET: "_ksv_charsets", FILE: "_ksv_files -f", DIRECTORY: "_ksv_files -d",
            NOTHING: ":"}[kind_of(option)]


def bash_words(options: list[dict]) -> str:
    """One name of each option: the long one, to be read."""
    return " ".join(option["names"][-1] for option in options)


def bash_case(words: str, call: dict) -> list[str]:
    lines = [f"    {words!r})" if " " in words else f"    {words})", "      case $previous in"]
    for option in call["options"]:
        if option["value"] and not option["valueMayLack"]:
            lines.append(f"        {'|'.join(option['names'])}) {bash_value(option)}; return ;;")
    lines += ["      esac",
              "      if [[ $current == -* ]]; then",
              f"        _ksv_words '{bash_words(call['options'])}'"]
    if call["operands"]:
        lines += ["      else", f"        {bash_value(call['operands'][0])}"]
    return [*lines, "      fi ;;"]


def bash(table: dict) -> str:
    parted = [job for job in table["jobs"] if job["parts"]]
    jobs = " ".join(job["name"] for job in table["jobs"])
    cases = [f"    '') _ksv_words '{jobs} {bash_words(table['options'])}' ;;"]
    for job in parted:
        parts = " ".join(part["name"] for part in job["parts"])
        cases.append(f"    {job['name']}) _ksv_words '{parts} {bash_words(job['options'])}' ;;")
    for words, call in calls_of(table):
        cases += bash_case(words, call)
    return head(table) + BASH_FUNCTIONS.replace(
        "PARTED", "|".join(job["name"] for job in parted)).replace("CASES", "\n".join(cases))


# ---- zsh ----

ZSH_FUNCTIONS = r'''
_ksv_charset() {
  local -a names
  names=($(_call_program charsets ${(q)command_word} charsets 2>/dev/null))
  compadd -M 'm:{a-zA-Z}={A-Za-z}' -a names
}
'''


def zsh_quoted(text: str) -> str:
    return "'" + text.replace("'", "'\\''") + "'"


def zsh_help(text: str) -> str:
    return "".join("\\" + sign if sign in "\\[]:" else sign for sign in text)


def zsh_action(option: dict) -> str:
    if option["oneOf"] or option["usual"]:
        values = [value.replace(" ", "\\ ") for value in option["oneOf"] or option["usual"]]
        return f"({' '.join(values)})"
    return {CHARSET: "_ksv_charset", FILE: "_files", DIRECTORY: "_files -/",
            NOTHING: " "}[kind_of(option)]


def zsh_option(option: dict) -> Iterator[str]:
    """A specification for _arguments of each name; the names exclude each other, but of an option
    that repeats."""
    others = f"({' '.join(option['names'])})" if len(option["names"]) > 1 else ""
    if option["repeats"]:
        others = "*"
    for name in option["names"]:
        spec = others + name
        if option["valueMayLack"]:
            spec += "=-"
        elif option["value"]:
            spec += "=" if name.startswith("--") else "+"
        spec += f"[{zsh_help(option['help'])}]"
        if option["value"]:
            spec += ("::" if option["valueMayLack"] else ":") + f"{option['value']}:"
            spec += zsh_action(option)
        yield spec


def zsh_operand(number: int, operand: dict) -> str:
    place = "*" if operand["repeats"] else str(number) + ("" if operand["required"] else ":")
    return f"{place}:{operand['value']}:{zsh_action(operand)}"


def zsh_arguments(call: dict, indent: str) -> str:
    specs = [spec for option in call["options"] for spec in zsh_option(option)]
    specs += [zsh_operand(number, operand) for number, operand in enumerate(call["operands"], 1)]
    return "_arguments -s " + f" \\\n{indent}  ".join(map(zsh_quoted, specs))


def zsh_choice(entries: list[dict], options: list[dict], cases: list[str], indent: str) -> list[str]:
    """Which of several words follows, and what follows that."""
    specs = [zsh_quoted(spec) for option in options for spec in zsh_option(option)]
    names = [zsh_quoted(f"{entry['name']}:{zsh_help(entry['help'])}") for entry in entries]
    return [f"{indent}local -a jobs",
            f"{indent}jobs=({f' '.join(names)})",
            f"{indent}_arguments -C {' '.join(specs)} '1: :->job' '*:: :->rest'",
            f"{indent}case $state in",
            f"{indent}  job) _describe job jobs ;;",
            f"{indent}  rest)",
            f"{indent}    case $words[1] in", *cases,
            f"{indent}    esac ;;",
            f"{indent}esac"]


def zsh(table: dict) -> str:
    functions, cases = [], []
    for job in table["jobs"]:
        function = f"_ksv_job_{job['name']}"
        cases.append(f"        {job['name']}) {function} ;;")
        functions.append(f"{function}() {{")
        if job["parts"]:
            inner = [f"        {part['name']}) {zsh_arguments(part, ' ' * 10)} ;;"
                     for part in job["parts"]]
            functions += ["  local state line", "  local curcontext=$curcontext",
                          *zsh_choice(job["parts"], job["options"], inner, "  ")]
        else:
            functions.append("  " + zsh_arguments(job, "  "))
        functions += ["}", ""]
    main = ["_ksv() {", "  local curcontext=$curcontext state line command_word=$words[1]",
            *zsh_choice(table["jobs"], table["options"], cases, "  "), "}", "", '_ksv "$@"']
    return "#compdef ksv\n" + head(table) + ZSH_FUNCTIONS + "\n" + "\n".join(functions + main) + "\n"


# ---- fish ----

FISH_FUNCTIONS = r'''
# Whether the words in front of the current one that are no options begin with those given, and
# name no more than those when the first argument says so.
function __ksv_job
    set -l found
    for word in (commandline -opc)[2..-1]
        string match -q -- '-*' $word; or set -a found $word
    end
    if test "$argv[1]" = --only
        test "$found" = "$argv[2..-1]"
    else
        set -l count (count $argv)
        test (count $found) -ge $count; and test "$found[1..$count]" = "$argv"
    end
end

function __ksv_charsets
    command ksv charsets 2>/dev/null | string split -n \t | string split -n ' '
end

complete -c ksv -f
'''


def fish_quoted(text: str) -> str:
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_value(option: dict) -> str:
    values = option["oneOf"] or option["usual"]
    if values:
        return f" -x -a {fish_quoted(' '.join(map(shlex.quote, values)))}"
    return {CHARSET: " -x -a '(__ksv_charsets)'", FILE: " -r -F",
            DIRECTORY: " -x -a '(__fish_complete_directories)'", NOTHING: " -x"}[kind_of(option)]


def fish_option(option: dict, condition: str) -> str:
    names = "".join(f" -l {name[2:]}" if name.startswith("--") else f" -s {name[1:]}"
                    for name in option["names"])
    value = fish_value(option) if option["value"] and not option["valueMayLack"] else ""
    return f"complete -c ksv{condition}{names}{value} -d {fish_quoted(option['help'])}"


def fish_condition(words: str, only: bool = False) -> str:
    return f" -n '{' '.join(['__ksv_job', *(['--only'] if only else []), *words.split()])}'"


def fish_words(entries: list[dict], words: str) -> list[str]:
    return [f"complete -c ksv{fish_condition(words, only=True)} -a {entry['name']} "
            f"-d {fish_quoted(entry['help'])}" for entry in entries]


def fish(table: dict) -> str:
    lines = fish_words(table["jobs"], "")
    lines += [fish_option(option, fish_condition("", only=True)) for option in table["options"]]
    for job in table["jobs"]:
        if job["parts"]:
            lines += fish_words(job["parts"], job["name"])
            lines += [fish_option(option, fish_condition(job["name"], only=True))
                      for option in job["options"]]
    for words, call in calls_of(table):
        condition = fish_condition(words)
        lines += [fish_option(option, condition) for option in call["options"]]
        operands = {kind_of(operand) for operand in call["operands"]}
        if FILE in operands:
            lines.append(f"complete -c ksv{condition} -F")
        elif DIRECTORY in operands:
            lines.append(f"complete -c ksv{condition} -a '(__fish_complete_directories)'")
    return head(table) + FISH_FUNCTIONS + "\n".join(lines) + "\n"


def main() -> None:
    table = json.loads(Path(sys.argv[1]).read_text(encoding="utf-8"))
    directory = Path(sys.argv[2])
    directory.mkdir(parents=True, exist_ok=True)
    for name, make in (("ksv.bash", bash), ("_ksv", zsh), ("ksv.fish", fish)):
        (directory / name).write_text(make(table), encoding="utf-8")


if __name__ == "__main__":
    main()
