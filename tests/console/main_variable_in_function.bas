limit = 10
call check()
end

sub check()
	if limit > 5 then
		print "over"
	endif
endsub
