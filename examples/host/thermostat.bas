# The script run by the example C++ host (automation_host.cpp): it drives
# the host's thermostat object.
t = createobject("Host.Thermostat")
x = t.Log("reading " + t.Reading)
t.SetPoint = t.SetPoint + 1.5
shown = "set point " + t.SetPoint
print shown
t.SetPoint = 99
shown = "still " + t.SetPoint
print shown
