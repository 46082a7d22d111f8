# ./demo --interactive: the prompt, on the stage that tools/demo-scene has set. Sourced.
# shellcheck disable=SC2154

cat <<'END'

This is `corvane shell`. Networks to try, and what they take:
  My Net-1        apple pie 42         connect 'My Net-1'
  Café am Eck     no passphrase        connect 'Café am Eck'
  Bücherei 7      0123456789
  Out of addresses, Too far            never connect
Also: networks, watch (Ctrl-C ends it), scan, power wifi off,
  set 'My Net-1' --address 192.168.178.50 --netmask 255.255.255.0 --gateway 192.168.178.1
  disconnect 'My Net-1'
A name with blanks takes quotes. quit ends the demo.

END
status=0
"${corvane[@]}" shell || status=$?
# How the last command ended is no matter of the demo's; that there was a prompt is.
((status != 1 && status < 126)) || [[ $status == 130 ]] || exit "$status"
