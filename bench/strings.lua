local s = ""
for i = 1, 20000 do s = s .. "x" end
print("done")
