# A terminal nobody listens on: the read times out with "", a short text is
# taken, a text of 513 characters is refused whole.
# args: --com 2=/dev/ptmx
print comportopen(2, 9600, 0, 0, 50)    # expect: True
r = comportread(2)
print len(r)                            # expect: 0
print comportwrite(2, "AT")             # expect: True
print comportwrite(2, repeat("x", 513)) # expect: False
print comportwrite(2, repeat("x", 512)) # expect: True
