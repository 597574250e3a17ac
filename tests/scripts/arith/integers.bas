# int truncates toward zero; loword, hiword and swap work on the number
# converted to unsigned 32 bits, which saturates: negative numbers and NaN
# give 0, anything above 4294967295 gives 4294967295.
print int(2.9); " "; int(-2.9); " "; int(-2.5); " "; int(0.5)  # expect: 2 -2 -2 0
print int(1e12); " "; int(-1e12); " "; int(sqr(-1))  # expect: 2147483647 -2147483648 0
print hiword(65536); " "; loword(65537)  # expect: 1 1
print hiword(4294967295); " "; loword(4294967295)  # expect: 65535 65535
print loword(-5); " "; hiword(-5)  # expect: 0 0
print loword(1e20); " "; hiword(1e20)  # expect: 65535 65535
print loword(sqr(-1)); " "; swap(sqr(-1))  # expect: 0 0
print swap(1)  # expect: 16777216
print swap(4278190080)  # expect: 255
# the swapped bytes are read back as a signed integer
print swap(255)  # expect: -16777216
print swap(305419896)  # expect: 2018915346
print swap(-1); " "; swap(1e20)  # expect: 0 -1
