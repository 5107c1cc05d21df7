#!/bin/sh
# The last lines of the chosen container before its latest restart.
exec "$KUBECTL" logs "pod/$POD" --container="$CONTAINER" --previous --tail=25 \
    --context="$CONTEXT" --namespace="$NAMESPACE"
