# "popupmenu" gives the chosen item's number (1 for the first), 0 when the
# menu is dismissed; without items it shows nothing and leaves the result.
# args: --ui-actions popupmenu.actions
m = popupmenu(10.7, 20, "Cut", "Copy", "Paste")
# expect: menu at 10,20
# expect:   1 "Cut"
# expect:   2 "Copy"
# expect:   3 "Paste"
print m                              # expect: 3
m = popupmenu(0, 0, "Cut", "Copy", "Paste")
print m                              # expect: 2
m = popupmenu(0, 0, "One")
print m                              # expect: 0
m = popupmenu(0, 0, "One", "Two")
print m                              # expect: 0
m = popupmenu(0, 0, "Left alone")
print m                              # expect: 0
m = 7
m = m + popupmenu(5, 5)
print m                              # expect: 7.000000
m = popupmenu(5)                     # expect error 24
m = popupmenu()                      # expect error 24
print "end"                          # expect: end
