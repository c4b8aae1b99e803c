#!/usr/bin/python3
"""Types command lines into zsh and looks at what the Tab key makes of them.

Usage: zsh_completion.py INSPECTOR FOLDER_OF_THE_COMPLETION        exits 77, skipped, without zsh
"""
import os
import pathlib
import pty
import re
import select
import shutil
import sys
import tempfile

PATIENCE = 60  # seconds; only a shell that hangs needs them
SETUP = r"""
fpath=($FOLDER ${(M)fpath:#*/Completion(|/Base|/Unix|/Zsh)}); autoload -Uz compinit && compinit -u -D
show() { print -r -- "<<$BUFFER>>"; BUFFER= }
zle -N show; bindkey '^G' show; bindkey '^I' complete-word
print '<<REA''DY>>'
"""
COMPLETE = {
    "iden": "identify ",
    "decode --delim": "decode --delimited ",
    "decode virtualdata.proto.SlaveDeac": "decode virtualdata.proto.SlaveDeactivateDataCallRequest ",
    "decode --from=bas": "decode --from=base64 ",
    "decode Dial card.b": "decode Dial card.bin ",
    "describe Dial.clir=CLIR_SUP": "describe Dial.clir=CLIR_SUPPRESSION ",
    "log --unit ims": "log --unit ims_service ",
    "log --grep isvoiceprivacy": "log --grep isvoiceprivacy=",
    "mask --trust-type --ty": "mask --trust-type --type=",
}


def await_line(terminal: int, pattern: bytes) -> str:
    seen = b""
    while not (found := re.search(pattern, seen)):
        if not select.select([terminal], [], [], PATIENCE)[0]:
            sys.exit(f"zsh says no more; it said {seen!r}")
        seen += os.read(terminal, 4096)
    return found[1].decode()


def main() -> None:
    if shutil.which("zsh") is None:
        print("skipped: no zsh")
        sys.exit(77)
    inspector, folder = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    with tempfile.TemporaryDirectory() as scratch:
        pathlib.Path(scratch, "card.bin").touch()
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(scratch)
            os.execvpe("zsh", ["zsh", "-f", "-i"], {
                "HOME": scratch, "TERM": "dumb", "FOLDER": str(folder), "LC_ALL": "C.UTF-8",
                "PATH": f"{inspector.parent}:{os.environ['PATH']}"})
        os.write(terminal, SETUP.encode())
        await_line(terminal, rb"<<(READY)>>")
        failures = 0
        for typed, wanted in COMPLETE.items():
            os.write(terminal, f"virtual-modem-inspect {typed}\t\x07".encode())
            got = await_line(terminal, rb"<<virtual-modem-inspect (.*)>>")
            if got != wanted:
                failures += 1
                print(f"'{typed}' became '{got}', not '{wanted}'")
        os.close(terminal)
        os.waitpid(process, 0)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
