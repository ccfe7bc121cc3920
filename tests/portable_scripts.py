"""Fails when a script uses what a Mac lacks: its bash is 3.2 and its tools are BSD's. A line that asks "command -v" first
knows that the tool may be missing. Usage: portable_scripts.py CHECKOUT"""
import re
import sys
from pathlib import Path

NEWER_THAN_BASH_3_2 = {
    r"\b(mapfile|readarray|coproc)\b": "mapfile -t lines < list",
    r"\b(declare|local|typeset|readonly)\s+-\w*[Agn]": "declare -A seen",
    r"\$\{\w+(\[[^]]*\])?(,,?|\^\^?|@)[^}]*\}": "${name,,}",
    r"\[-\d+\]": "${told[-1]}",
    r"\bwait\s+-[npf]": "wait -n",
    r"\|&|&>>|;;?&": "make |& tee log",
    r"printf\s+(-v\s+\w+\s+)?'%\(": "printf '%(%s)T'",
    r"\[\[\s+-[vR]\s|\bEPOCH(SECONDS|REALTIME)\b|\bBASHPID\b|\bglobstar\b|\bread\s+-\w*N": "[[ -v name ]]",
    r"\{\w+\}[<>]": "exec {lock}>file",
}
MISSING_OR_OTHER_ON_A_MAC = {
    r"(?<![-\w])(nproc|setarch|timeout|md5sum|sha\d+sum|tac|ldconfig|fuser)\b": "make -j \"$(nproc)\"",
    r"\brealpath\s+-|\breadlink\s+-[em]|\bcp\s+-\w*[tu]|\bln\s+-\w*[rT]": "realpath -m x",
    r"\bxargs\s+(-\S+\s+)*-(r|d|-\S+)\b": "xargs -0 -r rm",
    r"\bstat\s+(-c|--format|--printf)|\bdate\s+(-d|--)|\bsed\s+-i\s|\bgrep\s+-\w*P|\bsort\s+-\w*V": "stat -c %a x",
    r"\bfind\b.*\s-printf\b|\bmktemp\s+-\w*p|\bhead\s+-n\s*-|\bdu\s+-\w*b": "find . -printf '%p'",
}
REFUSED = {**NEWER_THAN_BASH_3_2, **MISSING_OR_OTHER_ON_A_MAC}


def faults(text):
    """Line numbers with what is wrong there."""
    lines = [re.sub(r"(^|\s)#\s.*", "", line) for line in text.splitlines()]
    for number, line in enumerate(lines, 1):
        for pattern in REFUSED:
            found = re.search(pattern, line)
            if found and "command -v" not in line:
                yield number, found[0]
    # For bash 3.2 an array without elements is unset, which ends a script under "set -u".
    for name in set(re.findall(r"\b(\w+)=\(\)", "\n".join(lines))):
        if not any("${#%s[@]}" % name in line for line in lines):
            for number, line in enumerate(lines, 1):
                if '"${%s[@]}"' % name in line.replace('${%s[@]+"${%s[@]}"}' % (name, name), ""):
                    yield number, f"{name}[@], which may be empty"


for pattern, sample in REFUSED.items():
    assert re.search(pattern, sample), f"{pattern} does not see {sample}"
assert list(faults('a=()\nb "${a[@]}"')) and not list(faults('a=()\nb ${a[@]+"${a[@]}"}'))

checkout = Path(sys.argv[1])
scripts = [file for file in [*checkout.glob("script/*"), checkout / ".ci/run", checkout / "bench/run"] if file.is_file()]
assert len(scripts) > 8, scripts
found = [f"{script.relative_to(checkout)}:{number}: {what}" for script in scripts
         for number, what in faults(script.read_text())]
print("\n".join(found) or f"{len(scripts)} scripts are fit for a Mac")
sys.exit(1 if found else 0)
