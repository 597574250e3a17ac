# Objects returned from methods and functions, kept in variables and arrays,
# passed to functions and set as properties. Each Test.Calc counts the live
# ones: an object goes when the last variable, element or local holding it
# lets go of it.
c = createobject("Test.Calc")
print c.Live  # expect: 1
d = c.Make()
print c.Live  # expect: 2
d.Value = 7
print d.Value  # expect: 7
dim a[3]
a[0] = d
a[1] = c.Make()
print c.Live  # expect: 3
d = 0
print c.Live  # expect: 3
e = a[0]
print e.Value  # expect: 7
a[0] = 0
e = 0
print c.Live  # expect: 2
b = a
a[1] = 0
print c.Live  # expect: 2
b[1] = 0
print c.Live  # expect: 1
t = twin(c)
print c.Live  # expect: 2
print scratch(c)  # expect: 3
print c.Live  # expect: 2
c.Peer = t
p = c.Peer
print p.IsSame(t)  # expect: -1
print c.IsSame(t)  # expect: 0
t = 0
p = 0
print c.Live  # expect: 2
c.Peer = 0
print c.Live  # expect: 1
end

function twin(obj)
  twin = obj.Make()
endfunction

function scratch(obj)
  kept = obj.Make()
  scratch = obj.Live
endfunction
