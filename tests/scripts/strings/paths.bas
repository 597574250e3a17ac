# getpath keeps everything up to the last backslash (when it stands at
# position 1 or later); getname gives what follows it. Otherwise the result
# stays unset, which len tells from an empty string (0.000000 instead of 0).
print getpath("\dir\f.txt")  # expect: \dir\
print getname("\dir\f.txt")  # expect: f.txt
print getpath("c:\a\b\c.bas")  # expect: c:\a\b\
print getname("c:\a\b\c.bas")  # expect: c.bas
print len(getpath("file.txt"))  # expect: 0.000000
print len(getname("file.txt"))  # expect: 0.000000
print len(getpath("\f.txt"))  # expect: 0.000000
print getname("\f.txt")  # expect: f.txt
print len(getname("\dir\"))  # expect: 0.000000
print getpath("\dir\", "more")  # expect: \dir\
x = getpath()  # expect error 24
x = getname()  # expect error 24
