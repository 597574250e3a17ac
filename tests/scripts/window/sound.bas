# "playsound" returns at once; a file that cannot be played, or no sound
# service, is silence and no error.
playsound "no_such_sound.wav"
playsound "sound.bas"
playsound ""
print "went on"                 # expect: went on
