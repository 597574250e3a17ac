# "OnStop" runs after the main program with the script path as its argument;
# its handler runs to its end although "end" has stopped the program.
event create OnStop, stopped
print "main"  # expect: main
end
# expect: stopping
# expect: stopped

function stopped(path)
  print "stopping"
  if instr(path, "onstart_onstop.bas") > 0 then
    print "stopped"
  endif
endfunction
