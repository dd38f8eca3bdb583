#!/usr/bin/env python3
"""Packs OpenCL C sources: pack_kernels.py OUTPUT_FOLDER NAME=FILE..., or shows one as it will be built: --expand FILE.

Each source becomes a list of indices into one sorted dictionary of words; joined with blanks, the words are the source
again, without comments and on one line. Writes kernels.h and kernels.cpp. What a single line cannot hold is refused:
preprocessor lines ("enum" and "_Pragma" serve instead) and line continuations.
"""
import pathlib
import re
import sys

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/)
      | (?P<word>[A-Za-z_]\w*
      | \.?\d(?:[eEpP][+-]|[\w.])*
      | "(?:[^"\\\n]|\\.)*" | '(?:[^'\\\n]|\\.)*'
      | <<=|>>=|\.\.\.|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=
      | [][(){}.,;:?~!<>=+*/%&|^-])""",
    re.VERBOSE | re.DOTALL,
)


def words_of(name, text):
    words, at = [], 0
    while at < len(text):
        match = TOKEN.match(text, at)
        if not match:
            line = text.count("\n", 0, at) + 1
            sys.exit(f"{name}:{line}: cannot be packed: {text[at:].splitlines()[0]}")
        if match.lastgroup == "word":
            words.append(match.group("word"))
        at = match.end()
    if not words:
        sys.exit(f"{name}: holds no kernel")
    return words


def literal(word):
    return '"' + word.replace("\\", "\\\\").replace('"', '\\"') + '"'


def main():
    if sys.argv[1] == "--expand":
        print(" ".join(words_of(sys.argv[2], pathlib.Path(sys.argv[2]).read_text())))
        return
    folder = pathlib.Path(sys.argv[1])
    sources = dict(argument.split("=", 1) for argument in sys.argv[2:])
    packed = {name: words_of(path, pathlib.Path(path).read_text()) for name, path in sources.items()}
    dictionary = sorted({word for words in packed.values() for word in words})
    if len(dictionary) > 65536:
        sys.exit("the dictionary is full: indices have 16 bits")
    index = {word: i for i, word in enumerate(dictionary)}

    header = ["// Packed OpenCL sources; made by pack_kernels.py.", "#pragma once", "", '#include "opencl/program.h"', "",
              "namespace kernels {", *(f"extern const OpenCL::PackedSource {name};" for name in packed), "}"]
    code = ["// Packed OpenCL sources; made by pack_kernels.py.", '#include "kernels.h"', "", "namespace OpenCL {",
            "const char* const kWords[] = {", *(f"    {literal(word)}," for word in dictionary), "};", "}", "",
            "namespace kernels {"]
    for name, words in packed.items():
        code.append(f"static constexpr std::uint16_t {name}_words[] = {{")
        code.append("    " + ", ".join(str(index[word]) for word in words))
        code.append("};")
        code.append(f"constinit const OpenCL::PackedSource {name} = {name}_words;")
    code.append("}")
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "kernels.h").write_text("\n".join(header) + "\n")
    (folder / "kernels.cpp").write_text("\n".join(code) + "\n")


main()
