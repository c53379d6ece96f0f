#!/bin/bash
# On the booted machine of systemdTest.sh: the guide's commands, what the collector has of the metrics,
# and what the units came to.
stty -F /dev/ttyS1 raw
cd / && . /guide.sh
file=/run/tav-metrics/tav.prom
tries=0
# The timer waits ten seconds after the start; what is emulated is slow.
until [ -e "$file" ] && curl -s 127.0.0.1:9100/metrics >/tmp/collected &&
    grep -q '^tav_devices ' /tmp/collected; do
    tries=$((tries + 1))
    [ "$tries" -lt 200 ] || break
    sleep 1
done
grep -E '^(tav_|node_textfile_scrape_error)' /tmp/collected
echo "result $(systemctl show -P Result tav-metrics.service)"
echo "mode $(stat -c %a "$file")"
setpriv --reuid nobody --clear-groups sh -c ": >${file%/*}/other" 2>/dev/null ||
    echo "others may not write"
journalctl -b --no-pager -u tav-metrics.service -u prometheus.service
echo end
systemctl poweroff -f -f
