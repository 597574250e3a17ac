# --codepage=utf-8 reads a Windows-1252 script as UTF-8: each of its bytes
# that is no UTF-8 becomes one replacement character.
# args: --codepage=utf-8
print len("Grüße")                      # expect: 5
print instr("Grüße", "e")               # expect: 4
