# A missing library or entry point, a wrong argument count and a malformed or
# repeated declaration are each reported; the run goes on.
declare function nolib lib "no_such_library_for_declare" () as integer
declare function noentry lib "obtest" alias "ob_no_such_function" () as integer
declare function add2 lib "obtest" alias "ob_add" (byval a as integer, byval b as integer) as integer
declare function add33 lib "obtest" alias "ob_weighted32" (byval a1 as integer, byval a2 as integer, byval a3 as integer, byval a4 as integer, byval a5 as integer, byval a6 as integer, byval a7 as integer, byval a8 as integer, byval a9 as integer, byval a10 as integer, byval a11 as integer, byval a12 as integer, byval a13 as integer, byval a14 as integer, byval a15 as integer, byval a16 as integer, byval a17 as integer, byval a18 as integer, byval a19 as integer, byval a20 as integer, byval a21 as integer, byval a22 as integer, byval a23 as integer, byval a24 as integer, byval a25 as integer, byval a26 as integer, byval a27 as integer, byval a28 as integer, byval a29 as integer, byval a30 as integer, byval a31 as integer, byval a32 as integer, byval a33 as integer) as integer
x = nolib()  # expect error 25
x = nolib()  # expect error 25
x = noentry()  # expect error 26
x = add2(1)  # expect error 24
x = add2(1, 2, 3)  # expect error 24
call add2()  # expect error 24
x = add33(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33)  # expect error 24
print add2(1, 2)  # expect: 3
declare function lib "obtest" ()  # expect error 1
declare function f1 "obtest" ()  # expect error 1
declare function f2 lib obtest ()  # expect error 1
declare function f3 lib "obtest" (a integer)  # expect error 1
declare function f4 lib "obtest" (a as long)  # expect error 1
declare function f5 lib "obtest" (a as integer  # expect error 1
declare function f6 lib "obtest" () as long  # expect error 1
declare procedure f7 lib "obtest" ()  # expect error 1
declare function f8 lib "obtest" () as integer extra  # expect error 1
declare sub f9 lib "obtest" alias ()  # expect error 1
declare function f10 lib "obtest" (a as integer,)  # expect error 1
declare  # expect error 1
print "between"  # expect: between
declare function add2 lib "obtest" alias "ob_add" (byval a as integer, byval b as integer) as integer  # expect error 27
declare function len lib "c" alias "strlen" (s as string) as integer  # expect error 27
print len("abc")  # expect: 3
print "after"  # expect: after
