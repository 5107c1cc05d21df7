#!/bin/sh
# Takes the chosen deployment back to its previous revision.
exec "$KUBECTL" rollout undo "deployment/$DEPLOYMENT" --context="$CONTEXT" --namespace="$NAMESPACE"
