# rad2dms packs radians as degrees, minutes and seconds: DDD.MMSSsss;
# dms2rad reads that form back.
print format(rad2dms(0.5), "%.7f")  # expect: 28.3852403
print format(rad2dms(-0.5), "%.7f")  # expect: -28.3852403
print rad2dms(0)  # expect: 0.000000
# 30 degrees packs as exactly 30, not 29.5959999
print format(rad2dms(dms2rad(30)), "%.10f")  # expect: 30.0000000000
# 30 degrees 30 minutes
print format(dms2rad(30.3), "%.12f")  # expect: 0.532325421858
print format(dms2rad(-30.3), "%.12f")  # expect: -0.532325421858
# round trips
print format(dms2rad(rad2dms(1)), "%.10f")  # expect: 1.0000000000
print format(rad2dms(dms2rad(123.4530125)), "%.7f")  # expect: 123.4530125
print isnan(rad2dms(sqr(-1)))  # expect: 1
