# Text parameters always go by reference: "string" as 8-bit text in the
# script code page, "unicode" as UTF-16, each in a buffer of at least 256
# characters. What comes back is read only within the buffer, whatever the
# callee wrote; returned texts are read up to their terminator.
declare function ob_length lib "obtest" (s as string) as integer
declare sub ob_upper lib "obtest" (s as string)
declare sub ob_greet lib "obtest" (s as string)
declare sub ob_fill lib "obtest" (s as string, byval count as integer, byval c as integer)
declare function ob_text lib "obtest" () as string
declare function ob_null_text lib "obtest" () as string
declare function ob_wlength lib "obtest" (s as unicode) as integer
declare sub ob_wreverse lib "obtest" (byval s as unicode)
declare sub ob_wfill lib "obtest" (s as unicode, byval count as integer, byval c as integer)
declare function ob_wtext lib "obtest" () as unicode
s = "hello"
call ob_upper(s)
print s  # expect: HELLO
print ob_length(s); " "; ob_length("abc"); " "; ob_length(12.5)  # expect: 5 3 9
# one byte per character in the code page
print ob_length("café")  # expect: 4
g = "x"
call ob_greet(g)
print g  # expect: café €5
# a literal argument gets nothing back, nor does the variable of an expression
call ob_upper("abc")
call ob_upper(g + "")
print g  # expect: café €5
# filled to the last character without a terminator
f = ""
call ob_fill(f, 256, 120)
print len(f); " "; right(f, 3)  # expect: 256 xxx
# a longer text brings a larger buffer
long = repeat("a", 300)
call ob_fill(long, 301, 98)
print len(long); " "; left(long, 2)  # expect: 301 bb
print ob_text()  # expect: from C
print "<"; ob_null_text(); ">"  # expect: <>
w = "abé€"
print ob_wlength(w)  # expect: 4
# "byval" changes nothing for text: still by reference
call ob_wreverse(w)
print w  # expect: €éba
call ob_wfill(w, 256, 122)
print len(w); " "; left(w, 3)  # expect: 256 zzz
print ob_wtext()  # expect: wide € é
