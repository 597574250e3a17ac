# A port whose device cannot be opened is kept and reported as opened; reads
# and writes on it leave their results unset (printed as empty lines);
# closing it works once.
# args: --com 3=/dev/ob-no-such-serial-device
print comportopen(3, 9600)              # expect: True
r = comportread(3)
print r                                 # expect:
w = comportwrite(3, "x")
print w                                 # expect:
print comportclose(3)                   # expect: True
print comportclose(3)                   # expect: False
