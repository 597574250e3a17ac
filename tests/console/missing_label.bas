goto finsh
end
finish:
