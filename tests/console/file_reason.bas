open "no/such/dir/data.txt" for input as 1 text
