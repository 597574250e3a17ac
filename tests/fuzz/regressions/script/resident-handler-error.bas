event create ping, h
stayresident
end
function h(a, b)
  c = a[9]
endfunction
