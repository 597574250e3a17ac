"""Random programs for the differential test: numbers, strings, arrays,
calls (with effects, text results, errors inside and the end of the run),
loops, conditions and deliberate errors (names never defined,
subscripts out of range, strings where numbers are expected, malformed
lines), small enough to run in milliseconds."""

NUMERIC = ["a", "b", "c", "i", "k"]
STRINGS = ["s", "t"]
ARRAYS = [("v", 6), ("w", 3)]
UNDEFINED = ["nope", "zz"]
COMPARISONS = ["=", "<", ">", "<>", "<=", "=>", "!=", "~~"]


def number(rng):
    return rng.choice(["0", "1", "2", "3", "7", "10", "0.5", "2.25", "1e3", "100"])


def operand(rng, depth, names):
    roll = rng.random()
    if roll < 0.3:
        return number(rng)
    if roll < 0.6:
        return rng.choice(names + ["f0", "d0"])
    if roll < 0.72:
        name, size = rng.choice(ARRAYS)
        index = rng.choice([str(rng.randrange(size)), "i", "k - 1", str(size), "-1", "i % 3"])
        return f"{name}[{index}]"
    if roll < 0.76:
        return rng.choice(UNDEFINED + STRINGS + ["True", "v"])
    if roll < 0.84:
        function = rng.choice(["twice", "twice", "noisy", "texty", "broken", "noval"])
        return f"{function}({expression(rng, depth + 1, names)})"
    if roll < 0.88:
        return f"len({rng.choice(STRINGS)})"
    return f"({expression(rng, depth + 1, names)})"


def expression(rng, depth=0, names=NUMERIC):
    if depth > 3:
        return number(rng)
    text = ("-" if rng.random() < 0.1 else "") + operand(rng, depth, names)
    for _ in range(rng.randrange(3)):
        text += f" {rng.choice('+-*/%^')} {operand(rng, depth, names)}"
    return text


def string_expression(rng):
    parts = [rng.choice(STRINGS + ['"ab"', '"x y"'])]
    for _ in range(rng.randrange(3)):
        parts.append(rng.choice(STRINGS + ['"cd"', "a", "str(b)", "left(s, 2)"]))
    return " + ".join(parts)


COUNTS = ["0", "1", "3", "-1", "-7", "100", "2.9", "i", "k - 5", "len(s)", "1e300", "-1e300", '"2"', "nope"]
TEXTS = ['"abcde"', '""', '"x y"', '"\u00e4b"', "s", "t", "u"]


def text_operand(rng):
    roll = rng.random()
    if roll < 0.35:
        return rng.choice(TEXTS)
    if roll < 0.45:
        return rng.choice(["a", "2.5", "len(t)", "instr(s, \"l\")", "v[1]", "zz", "w"])
    call = rng.choice(["left", "right", "mid", "ucase", "lcase", "len", "instr"])
    text = rng.choice(TEXTS)
    if call == "mid":
        return f"mid({text}, {rng.choice(COUNTS)}, {rng.choice(COUNTS)})"
    if call in ("left", "right"):
        return f"{call}({text}, {rng.choice(COUNTS)})"
    if call == "instr":
        return f"instr({text}, {rng.choice(TEXTS)})"
    return f"{call}({text})"


def string_statement(rng):
    """Appends, substrings, lengths, number and text mixes, and calls that
    fail (missing arguments, "-" on texts, names never set)."""
    roll = rng.random()
    target = rng.choice(["s", "t", "u"])
    if roll < 0.3:
        tail = " + ".join(text_operand(rng) for _ in range(rng.randrange(1, 3)))
        return f"{target} = {target} + {tail}"
    if roll < 0.6:
        return f"{target} = {text_operand(rng)}"
    if roll < 0.8:
        return f"{rng.choice(NUMERIC)} = {' + '.join(text_operand(rng) for _ in range(rng.randrange(1, 4)))}"
    if roll < 0.9:
        return f"if {text_operand(rng)} {rng.choice(COMPARISONS)} {text_operand(rng)} then\n  t = t + \"!\"\nendif"
    return rng.choice(["t = left(s)", "t = mid(s, 1)", "t = s - \"a\"", "t = len()", "t = s * 2",
                       "u = q + \"a\"", "t = left(s, 1, 2)", "s = s + w", "t = (s)", "t = -s + len(s)"])


def condition(rng):
    if rng.random() < 0.5:   # small whole numbers: equal sides are common
        return f"{rng.choice(NUMERIC + ['f0', 'd0'])} {rng.choice(COMPARISONS)} {rng.randrange(4)}"
    return f"{expression(rng)} {rng.choice(COMPARISONS)} {expression(rng)}"


def assignment(rng):
    roll = rng.random()
    if roll < 0.6:
        return f"{rng.choice(NUMERIC)} = {expression(rng)}"
    if roll < 0.75:
        name, size = rng.choice(ARRAYS)
        index = rng.choice([str(rng.randrange(size)), "i % 3", str(size + 1), "k"])
        return f"{name}[{index}] = {expression(rng)}"
    if roll < 0.95:
        return f"{rng.choice(STRINGS)} = {string_expression(rng)}"
    return rng.choice([f"{rng.choice(NUMERIC)} = {rng.choice(STRINGS)}",
                       f"{rng.choice(NUMERIC)} = {rng.choice(NUMERIC)}",
                       f"{rng.choice(NUMERIC)} = ", f"{rng.choice(NUMERIC)} = (1 + 2",
                       f"{rng.choice(NUMERIC)} = 1 2", "q = q + 1", "a = b c"])


def block(rng, depth, lines, indent=""):
    for _ in range(rng.randrange(2, 6)):
        roll = rng.random()
        if roll < 0.3 or depth > 2:
            lines.append(indent + assignment(rng))
        elif roll < 0.45:
            lines.extend(indent + line for line in string_statement(rng).split("\n"))
            lines.extend(indent + line for line in ["if len(s) > 300 then", "  s = left(s, 7)", "endif"])
        elif roll < 0.6:
            lines.append(f"{indent}if {condition(rng)} then")
            block(rng, depth + 1, lines, indent + "  ")
            if rng.random() < 0.6:
                lines.append(indent + "else")
                block(rng, depth + 1, lines, indent + "  ")
            lines.append(indent + "endif")
        elif roll < 0.72:
            variable = f"f{depth}"   # one counter per depth, never assigned elsewhere
            lines.append(f"{indent}for {variable} = {rng.randrange(3)} to {rng.randrange(5)}")
            block(rng, depth + 1, lines, indent + "  ")
            lines.append(indent + "next")
        elif roll < 0.78:
            lines.append(f"{indent}d{depth} = 0")
            lines.append(f"{indent}do while d{depth} < {rng.randrange(4)}")
            lines.append(f"{indent}  d{depth} = d{depth} + 1")
            block(rng, depth + 1, lines, indent + "  ")
            lines.append(indent + "loop")
        elif roll < 0.92:
            items = [rng.choice(NUMERIC + STRINGS + ["v[1]", "w[0]"]) for _ in range(rng.randrange(1, 3))]
            lines.append(indent + "print " + rng.choice(["; ", ", "]).join(items))
        else:
            lines.append(indent + rng.choice(["call show(a)", "a = twice(b) + 1", "b = twice(s)",
                                              "if a then", "k = k + 1 # note", "a = noisy(1) + twice()",
                                              "k = noisy(k) + noisy(2, 3)", "c = noisy(1) + quit(1) + noisy(2)"]))


def generate(rng):
    lines = ["global n", "n = 0", "a = 1", "b = 2", "c = 0", "i = 0", "k = 3", 's = "hello"', 't = ""',
             "u = t", "dim v[6]", "dim w[3]", "v[0] = 5", "w[1] = 2"]
    block(rng, 0, lines)
    lines.append('print "end"; a; b; c; i; k; s; t; u; v[0]; v[1]; w[1]; n')
    lines += ["end", "function twice(x)", "  if x > 1000000 then", "    twice = 0", "  else",
              "    twice = x * 2", "  endif", "endfunction", "sub show(p)", "  print p", "endsub"]
    # calls with effects that must happen once, a text result, an error
    # inside, no value, and the end of the run inside a call
    lines += ["function noisy(x)", "  n = n + 1", '  print "noisy"; n', "  noisy = x + n", "endfunction",
              "function texty(x)", '  texty = "t" + x', "endfunction",
              "function broken(x)", "  broken = x + zz", "endfunction",
              "function noval(x)", '  print "noval"', "endfunction",
              "function quit(x)", '  print "quit"', "  end", "endfunction"]
    return "\n".join(lines) + "\n"
