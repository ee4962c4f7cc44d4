# Prints a line of C++ for every function that the public headers export, or those of the given
# names do: its form, as the document of return codes writes it, and a call with the arguments of
# these names and types; then its parameters that are references, the matrices of a range and the
# object of a member among them.
# Usage: exported_calls.py INCLUDE_FOLDER [HEADER_WITHOUT_SUFFIX...]
import pathlib
import re
import sys

RAW_MEMORY = ("lapack", "ref_counted") # headers whose functions are not called
OBJECTS = {"node_detector": "detector", "histogram": "statistics"}
DECLARATION = re.compile(r"(KVX_ZELVO_API )?\b([\w:]+(?: int| char)?[*&]?) (\w+)\(([^()]*)\)( const)? noexcept;")

print("#ifndef PARAMETERS\n#define PARAMETERS(...)\n#endif")
number = 0
for header in sorted(h for h in pathlib.Path(sys.argv[1]).rglob("*.h") if h.stem in (sys.argv[2:] or [h.stem])):
    text = " ".join(re.sub(r"//.*", "", header.read_text()).split())
    scope = re.search(r"class KVX_ZELVO_API (\w+)", text)
    exports = text.count("KVX_ZELVO_API ") - (scope is not None) - text.count("define KVX_ZELVO_API ")
    for mark, result, name, parameters, constant in DECLARATION.findall(text.split("private:")[0]):
        exports -= mark != ""
        if not (mark or scope) or (scope and name == scope[1]):
            continue
        pairs = [p.rsplit(" ", 1) for p in re.split(r", (?![^<]*>)", parameters) if p]
        form = f"{scope[1] + '::' if scope else ''}{name}({', '.join(n for _, n in pairs)})"
        ranges = iter(("first", "last"))
        arguments = [f"ARGUMENT({next(ranges) if t.endswith('int>*') else n}, {t})" for t, n in pairs]
        function = f"{OBJECTS[scope[1]]}.{name}" if scope else name
        macro = "CALL" if result in ("int", "unsigned int", "bool") else "NO_RESULT"
        dimension = 2 if "double, 2>" in parameters else 3
        call = f"{function}({', '.join(arguments)})"
        if header.stem in RAW_MEMORY:
            call, pairs = "static_cast<void>(0)", []
        print(f'{macro}({number}, "{form}", {dimension}, {call})')
        passed = [f"ARGUMENT({n}, {t})" for t, n in pairs if t.endswith("&")]
        passed += [f"ARGUMENT(range[{i}], {t[:-1]}&)" for i, t in enumerate(t for t, _ in pairs if t.endswith("int>*"))]
        passed += [f"ARGUMENT({OBJECTS[scope[1]]}, {'const ' if constant else ''}{scope[1]}&)"] if scope else []
        print(f'PARAMETERS({number}{"".join(", " + p for p in passed)})')
        number += 1
    if exports:
        sys.exit(f"{header}: exports more than was understood")
