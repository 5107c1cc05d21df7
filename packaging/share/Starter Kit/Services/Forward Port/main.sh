#!/bin/sh
# Makes the first port of the chosen service reachable on this machine, until the window is closed.
port=$("$KUBECTL" get "service/$SERVICE" --context="$CONTEXT" --namespace="$NAMESPACE" \
    --output=jsonpath='{.spec.ports[0].port}')
# Ports below 1024 are not for everybody to open.
local=$port
[ "${port:-0}" -lt 1024 ] && local=$((port + 8000))
if [ -n "$port" ]; then
    echo "$SERVICE: port $port will be at http://localhost:$local"
    "$KUBECTL" port-forward "service/$SERVICE" "$local:$port" --context="$CONTEXT" --namespace="$NAMESPACE"
fi
