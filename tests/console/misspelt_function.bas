call pritnline("x")
end

sub printline(text)
  print text
endsub
