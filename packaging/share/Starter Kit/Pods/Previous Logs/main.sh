#!/bin/sh
# The last lines of the chosen container before its latest restart.
if [ "$NAMESPACE" = "All Namespaces" ]; then
    echo "Choose the namespace of $POD first." >&2
    exit 1
fi
exec "$KUBECTL" logs "pod/$POD" --container="$CONTAINER" --previous --tail=200 \
    --context="$CONTEXT" --namespace="$NAMESPACE"
